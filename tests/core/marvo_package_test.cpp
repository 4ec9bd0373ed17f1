#include "VarkelCore/src/upgrade/marvo_package.h"

#include <gtest/gtest.h>

#include "tests/core/marvo_sample.h"

namespace varkel {
namespace {

using test::MarvoPackage;
using test::Range;
using Bytes = std::vector<std::uint8_t>;

TEST(MarvoPackage, ExtractsWithinThePackage) {
  struct Case {
    const char* name;
    Range range;
    std::size_t begin;  ///< within the data
    std::size_t size;
    bool out_of_range;
  };
  const Bytes package = MarvoPackage(0, {}, 2000);
  const std::vector<Case> cases = {
      {"TMB_PARAM", {0, 2000}, 0, 2000, false},
      {"TMB_PARAM", {2000, 1}, 0, 0, true},
      {"TMB_PARAM", {0, 2001}, 0, 0, true},
      {"BMB_FPGA", {10, 1024}, 10, 1024, false},
      {"BMB_FPGA", {10, 1025}, 1034, 1, false},
      {"BMB_APP_A", {10, 1025}, 10, 1025, false},
      {"TMB_PARAM", {0xFFFFFFF0, 32}, 0, 0, false},        // wraps to a range that the header would cover
      {"TMB_PARAM", {0, 0xFFFFFFD0}, 0, 0, false},         // begins inside the package and ends far after it
      {"TMB_PARAM", {0xFFFFFFF0 - 56, 100}, 0, 0, false},  // only the sum wraps
  };
  for (const Case& c : cases) {
    const auto extracted = ExtractComponent(package, {c.name, 0, c.range.offset, c.range.size, true});
    EXPECT_EQ(extracted.out_of_range, c.out_of_range) << c.name << " " << c.range.offset;
    ASSERT_EQ(extracted.data.size(), c.size) << c.name << " " << c.range.offset;
    EXPECT_TRUE(c.size == 0 || extracted.data.data() == package.data() + 56 + c.begin) << c.name;
  }
}

}  // namespace
}  // namespace varkel
