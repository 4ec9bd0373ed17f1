#include "VarkelCore/src/values/value_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/protocol_page.h"

namespace varkel {
namespace {

using quarn::test::FromHex;

TEST(ValueText, ShowsEveryTypeOrSaysWhyNot) {
  using enum ValueFault;
  const struct {
    const char* var_type;
    const char* hex;
    float coefficient;
    const char* text;
    ValueFault fault = kNone;
  } kCases[] = {
      {"IP", "C0 A8 01 C9", 1, "192.168.1.201"},
      {"MAC", "00 10 1A FF 05 A0", 1, "00:010:1A:FF:05:A0"},
      {"HWVER", "51 4D 42 00 00 00 00 00 02 01 00 FF 00 00 04 A3", 1, "QMB 2.1.0.255 (1187)"},
      {"SWVER_YMD", "03 04 0C 00 07 E8 09 02", 1, "3.4.12.0 (2024-09-02)"},
      {"string", "53 4E 20 31 00 00", 1, "SN 1"},
      {"uint8", "FF", 1, "255"},
      {"int8", "FF", 1, "-1"},
      {"uint16", "04 B4", 0.01F, "12.04"},
      {"int16", "FF FE", 0.25F, "-0.50"},
      {"uint64", "FF FF FF FF FF FF FF FF", 1, "18446744073709551615"},
      {"uint16", "01 02 03", 1, "515"},
      {"float32", "3F 80 00 00", 1, "1.00"},
      {"double", "3F F0 00 00 00 00 00 00", 0.5F, "0.50"},
      {"DT", "00 00 0E 11", 1, "1 h 0 min 1 s"},
      {"MAC", "00 10 1A FF 05", 1, "", kMacSize},
      {"HWVER", "51 4D 42", 1, "", kVersionSize},
      {"SWVER_YMD", "03 04 0C 00 07 E8 09 02 00", 1, "", kVersionSize},
      {"float32", "3F 80 00", 1, "", kNumberSize},
      {"DT", "", 1, "", kEmpty},
      {"raw", "20", 1, "", kUnsupportedType},
      {"Uint8", "20", 1, "", kUnsupportedType},
  };
  for (const auto& c : kCases) {
    const ValueText value = BytesToText(c.var_type, FromHex(c.hex), c.coefficient);
    EXPECT_EQ(value.fault, c.fault) << c.var_type << " " << c.hex;
    EXPECT_STREQ(value.text.c_str(), c.text) << c.var_type << " " << c.hex;
  }
  EXPECT_EQ(BytesToText("string", FromHex("41 00 42 00"), 1).text.size(), 3U) << "only padding is dropped";
}

}  // namespace
}  // namespace varkel
