#include "VarkelCore/src/value_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "libquarn/Platform/src/text_number.h"

namespace varkel {
namespace {

std::vector<std::uint8_t> FromHex(const std::string& hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 3) {
    bytes.push_back(static_cast<std::uint8_t>(quarn::lidar::TextToInt(hex.substr(i, 2), 16)));
  }
  return bytes;
}

TEST(ValueText, ShowsEveryType) {
  const struct {
    const char* var_type;
    const char* hex;
    float coefficient;
    const char* text;
  } kCases[] = {
      {"IP", "C0 A8 01 C9", 1, "192.168.1.201"},
      {"MAC", "00 10 1A FF 05 A0", 1, "00:010:1A:FF:05:A0"},
      {"MAC", "0A 0F 11 00 00 01 FF FF", 1, "0A:0F:11:00:00:01"},
      {"HWVER", "51 4D 42 00 00 00 00 00 02 01 00 FF 00 00 04 A3", 1, "QMB 2.1.0.255 (1187)"},
      {"HWVER", "51 4D 42 2D 41 42 43 44 02 01 00 03 FF FF FF FF", 1, "QMB-ABCD 2.1.0.3 (4294967295)"},
      {"SWVER_YMD", "03 04 0C 00 07 E8 09 02", 1, "3.4.12.0 (2024-09-02)"},
      {"SWVER_YMD", "00 00 00 00 00 00 00 00", 1, "0.0.0.0 (0000-00-00)"},
      {"string", "53 4E 20 31 00 00", 1, "SN 1"},
      {"string", "00 00", 1, ""},
      {"uint8", "FF", 1, "255"},
      {"int8", "FF", 1, "-1"},
      {"uint16", "01 02", 1, "258"},
      {"uint16", "01 02", 0.5F, "129.00"},
      {"uint16", "04 B4", 0.01F, "12.04"},
      {"int16", "FF FE", 0.25F, "-0.50"},
      {"uint32", "FF FF FF FF", 1, "4294967295"},
      {"uint32", "FF FF FF FF", 0.5F, "2147483647.50"},
      {"int32", "80 00 00 00", 1, "-2147483648"},
      {"uint64", "FF FF FF FF FF FF FF FF", 1, "18446744073709551615"},
      {"int64", "FF FF FF FF FF FF FF DB", 1, "-37"},
      {"uint16", "01 02 03", 1, "515"},
      {"uint32", "FF", 1, "255"},
      {"int32", "FF 00", 1, "-256"},
      {"int8", "00 80", 1, "-128"},
      {"uint64", "01 00 00 00 00 00 00 00 02", 1, "2"},
      {"float32", "3F 80 00 00", 1, "1.00"},
      {"float32", "41 BE 00 00", 2, "47.50"},
      {"float32", "01 3F 80 00 00", 1, "1.00"},
      {"float32", "FF 80 00 00", 1, "-inf"},
      {"double", "3F F0 00 00 00 00 00 00", 0.5F, "0.50"},
      {"double", "C0 0C 00 00 00 00 00 00", 1, "-3.50"},
      {"DT", "00 00 0E 11", 1, "1 h 0 min 1 s"},
      {"DT", "FF FF FF FF", 1, "1193046 h 28 min 15 s"},
      {"DT", "3B", 1, "0 h 0 min 59 s"},
  };
  for (const auto& c : kCases) {
    const ValueText value = BytesToText(c.var_type, FromHex(c.hex), c.coefficient);
    EXPECT_EQ(value.fault, ValueFault::kNone) << c.var_type << " " << c.hex;
    EXPECT_STREQ(value.text.c_str(), c.text) << c.var_type << " " << c.hex;
  }
  EXPECT_EQ(BytesToText("string", FromHex("41 00 42 00"), 1).text.size(), 3U) << "only padding is dropped";
}

TEST(ValueText, TellsWhyAFieldCannotBeShown) {
  const struct {
    const char* var_type;
    std::size_t size;
    ValueFault fault;
  } kCases[] = {
      {"MAC", 5, ValueFault::kMacSize},           {"HWVER", 15, ValueFault::kVersionSize},
      {"HWVER", 17, ValueFault::kVersionSize},    {"SWVER_YMD", 7, ValueFault::kVersionSize},
      {"SWVER_YMD", 9, ValueFault::kVersionSize}, {"float32", 3, ValueFault::kNumberSize},
      {"double", 7, ValueFault::kNumberSize},     {"uint8", 0, ValueFault::kEmpty},
      {"int64", 0, ValueFault::kEmpty},           {"DT", 0, ValueFault::kEmpty},
      {"raw", 1, ValueFault::kUnsupportedType},   {"Uint8", 1, ValueFault::kUnsupportedType},
      {"", 1, ValueFault::kUnsupportedType},
  };
  for (const auto& c : kCases) {
    const ValueText value = BytesToText(c.var_type, std::vector<std::uint8_t>(c.size, 0x20), 1);
    EXPECT_EQ(value.fault, c.fault) << c.var_type << " of " << c.size;
    EXPECT_EQ(value.text, "") << c.var_type << " of " << c.size;
  }
}

TEST(ValueText, HoldsTheLargestNumbers) {
  const std::vector<std::uint8_t> largest = {0x7F, 0xEF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  EXPECT_EQ(BytesToText("double", largest, 1).text.size(), 309U + 3U);
  EXPECT_EQ(BytesToText("double", largest, 1e38F).text, "inf");
}

}  // namespace
}  // namespace varkel
