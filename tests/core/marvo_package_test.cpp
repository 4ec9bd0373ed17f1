#include "VarkelCore/src/upgrade/marvo_package.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/core/marvo_sample.h"

namespace varkel {
namespace {

using quarn::lidar::Partition;
using test::FullMarvoPackage;
using test::MarvoPackage;
using test::Range;
using Bytes = std::vector<std::uint8_t>;

TEST(MarvoPackage, ReadsFieldsOfPresentComponentsOnly) {
  const Bytes package = MarvoPackage(0xEA, {{{1, 2}, {0x01020304, 4}, {5, 6}, {7, 0x80000008}, {9, 10}}}, 0);
  OtaPackageHeader header;
  header.bmb_app_a.present = true;  // what stood there before is gone
  ASSERT_EQ(ParseMarvoPackage(package, header), MarvoPackageFault::kNone);
  EXPECT_EQ(header.total_size, 10000U);
  EXPECT_EQ(header.flags, 0xEA);
  EXPECT_FALSE(header.bmb_app_a.present || header.bmb_fpga.present || header.tmb_param.present);
  EXPECT_EQ(header.bmb_app_a.offset + header.bmb_app_a.size, 0U);
  EXPECT_EQ(header.bmb_app_b.offset, 0x01020304U);
  EXPECT_EQ(header.bmb_app_b.size, 4U);
  EXPECT_EQ(header.tmb_fpga.offset, 7U);
  EXPECT_EQ(header.tmb_fpga.size, 0x80000008U);
}

TEST(MarvoPackage, NeedsItsHeaderAndMagic) {
  const Bytes package = FullMarvoPackage();
  OtaPackageHeader header;
  EXPECT_EQ(ParseMarvoPackage({}, header), MarvoPackageFault::kTooShort);
  EXPECT_EQ(ParseMarvoPackage(std::span(package).first(55), header), MarvoPackageFault::kTooShort);
  EXPECT_EQ(ParseMarvoPackage(std::span(package).first(kMarvoHeaderSize), header), MarvoPackageFault::kNone);
  for (std::size_t i = 0; i < 4; ++i) {
    Bytes wrong = package;
    wrong[i] ^= 0x20;
    EXPECT_EQ(ParseMarvoPackage(wrong, header), MarvoPackageFault::kWrongMagic);
    EXPECT_EQ(header.flags, 0);
  }
}

TEST(MarvoPackage, SendsTheApplicationOfTheOtherPartition) {
  const std::tuple<std::uint8_t, Partition, const char*> cases[] = {
      {31, Partition::kA, "BMB_APP_B:2 BMB_FPGA:1 TMB_FPGA:0 TMB_PARAM:3 "},
      {31, Partition::kB, "BMB_APP_A:2 BMB_FPGA:1 TMB_FPGA:0 TMB_PARAM:3 "},
      {1, Partition::kA, ""},
      {1, Partition::kB, "BMB_APP_A:2 "},
      {0xE0, Partition::kB, ""}};
  for (const auto& [flags, running, expected] : cases) {
    OtaPackageHeader header;
    ParseMarvoPackage(MarvoPackage(flags, {}, 0), header);
    std::string names;
    for (const OtaComponent& component : ComponentsToSend(header, running)) {
      names += component.name + ":" + std::to_string(component.type) + " ";
    }
    EXPECT_EQ(names, expected) << int{flags};
  }
}

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
      {"TMB_PARAM", {0, 0xFFFFFFD0}, 0, 0, false},         // begins inside and ends far behind the package
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
