#include "VarkelCore/src/marvo_package.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/core/marvo_sample.h"

namespace varkel {
namespace {

using quarn::lidar::Partition;
using test::FullMarvoPackage;
using test::MarvoPackage;
using test::Range;
using Bytes = std::vector<std::uint8_t>;

std::vector<std::string> Names(const std::vector<OtaComponent>& components) {
  std::vector<std::string> names;
  for (const OtaComponent& c : components) names.push_back(c.name + ":" + std::to_string(c.type));
  return names;
}

/// Whatever the bytes say, nothing outside of them is read: the copy is exactly as large as the package, so
/// that AddressSanitizer sees one byte too many.
void ExtractAll(const Bytes& package) {
  const Bytes exact(package);
  OtaPackageHeader header;
  if (ParseMarvoPackage(exact, header) != MarvoPackageFault::kNone) return;
  unsigned sum = 0;
  for (const Partition running : {Partition::kA, Partition::kB}) {
    for (const OtaComponent& component : ComponentsToSend(header, running)) {
      const auto data = ExtractComponent(exact, component).data;
      ASSERT_LE(data.size(), exact.size());
      if (!data.empty()) {
        ASSERT_GE(data.data(), exact.data() + kMarvoHeaderSize);
        ASSERT_LE(data.data() + data.size(), exact.data() + exact.size());
      }
      for (const std::uint8_t byte : data) sum += byte;
    }
  }
  [[maybe_unused]] volatile unsigned read = sum;
}

TEST(MarvoPackage, ReadsFieldsOfPresentComponentsOnly) {
  const Bytes package = MarvoPackage(0xEA, {{{1, 2}, {0x01020304, 4}, {5, 6}, {7, 0x80000008}, {9, 10}}}, 0);
  OtaPackageHeader header;
  header.bmb_app_a.present = true;  // what stood there before is gone
  ASSERT_EQ(ParseMarvoPackage(package, header), MarvoPackageFault::kNone);
  EXPECT_EQ(header.total_size, 10000U);
  EXPECT_EQ(header.flags, 0xEA);
  EXPECT_FALSE(header.bmb_app_a.present);
  EXPECT_EQ(header.bmb_app_a.offset + header.bmb_app_a.size, 0U);
  EXPECT_TRUE(header.bmb_app_b.present);
  EXPECT_EQ(header.bmb_app_b.offset, 0x01020304U);
  EXPECT_EQ(header.bmb_app_b.size, 4U);
  EXPECT_FALSE(header.bmb_fpga.present);
  EXPECT_EQ(header.tmb_fpga.offset, 7U);
  EXPECT_EQ(header.tmb_fpga.size, 0x80000008U);
  EXPECT_FALSE(header.tmb_param.present);
}

TEST(MarvoPackage, NeedsItsHeaderAndMagic) {
  const Bytes package = FullMarvoPackage();
  OtaPackageHeader header;
  for (std::size_t size = 0; size < kMarvoHeaderSize; ++size) {
    EXPECT_EQ(ParseMarvoPackage(std::span(package).first(size), header), MarvoPackageFault::kTooShort);
  }
  EXPECT_EQ(ParseMarvoPackage(std::span(package).first(kMarvoHeaderSize), header), MarvoPackageFault::kNone);
  for (std::size_t i = 0; i < 4; ++i) {
    Bytes wrong = package;
    wrong[i] ^= 0x20;
    EXPECT_EQ(ParseMarvoPackage(wrong, header), MarvoPackageFault::kWrongMagic);
    EXPECT_EQ(header.flags, 0);
  }
}

TEST(MarvoPackage, SendsTheApplicationOfTheOtherPartition) {
  struct Case {
    std::uint8_t flags;
    Partition running;
    std::vector<std::string> names;
  };
  const std::vector<Case> cases = {
      {31, Partition::kA, {"BMB_APP_B:2", "BMB_FPGA:1", "TMB_FPGA:0", "TMB_PARAM:3"}},
      {31, Partition::kB, {"BMB_APP_A:2", "BMB_FPGA:1", "TMB_FPGA:0", "TMB_PARAM:3"}},
      {1, Partition::kA, {}},
      {1, Partition::kB, {"BMB_APP_A:2"}},
      {2, Partition::kA, {"BMB_APP_B:2"}},
      {24, Partition::kA, {"TMB_FPGA:0", "TMB_PARAM:3"}},
      {0xE0, Partition::kB, {}},
  };
  for (const Case& c : cases) {
    OtaPackageHeader header;
    ParseMarvoPackage(MarvoPackage(c.flags, {}, 0), header);
    EXPECT_EQ(Names(ComponentsToSend(header, c.running)), c.names) << int{c.flags};
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
      {"TMB_PARAM", {1999, 1}, 1999, 1, false},
      {"TMB_PARAM", {2000, 1}, 0, 0, true},
      {"TMB_PARAM", {0, 2001}, 0, 0, true},
      {"TMB_PARAM", {2000, 0}, 0, 0, false},
      {"BMB_FPGA", {10, 1024}, 10, 1024, false},
      {"BMB_FPGA", {10, 1025}, 1034, 1, false},
      {"TMB_FPGA", {0, 2000}, 1024, 976, false},
      {"BMB_APP_A", {10, 1025}, 10, 1025, false},
      {"TMB_PARAM", {0xFFFFFFF0, 32}, 0, 0, false},          // wraps to a range that the header would cover
      {"BMB_FPGA", {0xFFFFFF00, 0x700}, 0, 0, false},        // the same for an image with a preamble
      {"TMB_PARAM", {0xFFFFFFF0 - 56, 100}, 0, 0, false},    // only the sum wraps
      {"TMB_PARAM", {100, 0xFFFFFFFF - 100}, 0, 0, false},   // nearly all of it
      {"TMB_PARAM", {0xFFFFFFFF, 0xFFFFFFFF}, 0, 0, false},  // twice around
      {"TMB_PARAM", {4000000000, 100}, 0, 0, true},
  };
  for (const Case& c : cases) {
    const auto extracted = ExtractComponent(package, {c.name, 0, c.range.offset, c.range.size, true});
    EXPECT_EQ(extracted.out_of_range, c.out_of_range) << c.name << " " << c.range.offset;
    ASSERT_EQ(extracted.data.size(), c.size) << c.name << " " << c.range.offset;
    if (c.size > 0) {
      EXPECT_EQ(extracted.data.data(), package.data() + 56 + c.begin);
    }
  }
}

TEST(MarvoPackage, HostilePackagesStayInside) {
  const Bytes package = FullMarvoPackage();
  for (std::size_t size = 0; size < package.size(); size += size < 80 ? 1 : 97) {
    ExtractAll(Bytes(package.begin(), package.begin() + static_cast<std::ptrdiff_t>(size)));
  }
  for (std::size_t bit = 4 * 8; bit < kMarvoHeaderSize * 8; ++bit) {
    Bytes changed = package;
    changed[bit / 8] = static_cast<std::uint8_t>(changed[bit / 8] ^ (1U << (bit % 8)));
    ExtractAll(changed);
  }
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    Bytes changed(package.begin(), package.begin() + 56 + i % 300);
    for (std::size_t at = 8; at < kMarvoHeaderSize; ++at) changed[at] = static_cast<std::uint8_t>(random());
    ExtractAll(changed);
  }
}

TEST(MarvoPackage, SamplesAreWhatTheirNamesSay) {
  struct Case {
    const char* name;
    MarvoPackageFault fault;
    std::vector<std::size_t> sizes;  ///< extracted from, on partition A
  };
  const std::vector<Case> cases = {
      {"full", MarvoPackageFault::kNone, {2500, 3072, 1024, 100}},
      {"only-app-a", MarvoPackageFault::kNone, {}},
      {"only-app-b", MarvoPackageFault::kNone, {2000}},
      {"params", MarvoPackageFault::kNone, {1024}},
      {"small-fpga", MarvoPackageFault::kNone, {1, 1024}},
      {"tiny-fpga", MarvoPackageFault::kNone, {1}},
      {"no-component", MarvoPackageFault::kNone, {}},
      {"too-small", MarvoPackageFault::kTooShort, {}},
      {"wrong-magic", MarvoPackageFault::kWrongMagic, {}},
      {"cut-off", MarvoPackageFault::kNone, {2500, 0, 0, 0}},
      {"size-beyond-end", MarvoPackageFault::kNone, {0}},
      {"offset-beyond-end", MarvoPackageFault::kNone, {0}},
      {"wrapping-range", MarvoPackageFault::kNone, {0}},
      {"empty-component", MarvoPackageFault::kNone, {0}},
  };
  for (const Case& c : cases) {
    const Bytes package = test::SampleMarvoPackage(c.name);
    ASSERT_FALSE(package.empty()) << c.name;
    OtaPackageHeader header;
    EXPECT_EQ(ParseMarvoPackage(package, header), c.fault) << c.name;
    std::vector<std::size_t> sizes;
    for (const OtaComponent& component : ComponentsToSend(header, Partition::kA)) {
      sizes.push_back(ExtractComponent(package, component).data.size());
    }
    EXPECT_EQ(sizes, c.sizes) << c.name;
  }
}

}  // namespace
}  // namespace varkel
