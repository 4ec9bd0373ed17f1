#include "VarkelCore/src/values/str_parser.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/support/protocol_page.h"

namespace varkel {
namespace {

/// A text converted by a type: bytes in hexadecimal, or a refusal.
struct Case {
  const char* type;
  const char* text;
  const char* result;
  float coefficient = 1;
};

TEST(StrParser, ParsesToBytes) {
  const Case cases[] = {{"uint8", "255", "FF"},
                        {"uint8", "2.5", "05", 0.5F},
                        {"uint16", "1000", "27 10", 0.1F},
                        {"uint32", "0.9", "00 00 00 00"},
                        {"uint64", "0", "00 00 00 00 00 00 00 00"},
                        {"int8", "-128", "80"},
                        {"int16", "-3.9", "FF FD"},
                        {"int32", "2147483648", "80 00 00 00"},  // the bound is rounded up as a float
                        {"int64", "9223372036854775807", "7F FF FF FF FF FF FF FF"},
                        {"float32", "1", "BF 00 00 00", -2},
                        {"double", "1", "3F F0 00 00 00 00 00 00"},
                        {"double", "1e300", "7E 37 E4 3C 88 00 75 9C"},
                        {"IP", "192.168.1.201", "C0 A8 01 C9"},
                        {"MAC", "0:1:2:3:4:255", "00 01 02 03 04 FF"},
                        {"raw", "anything", ""}};
  for (const Case& c : cases) {
    const auto bytes = MakeStrParser(c.type)->ParseToBytes(c.text, c.coefficient);
    EXPECT_EQ(bytes, quarn::test::FromHex(c.result)) << c.type << " " << c.text;
  }
}

TEST(StrParser, Refuses) {
  const Case cases[] = {
      {"uint8", "256", "UintParser: contains an illegal number, error:256"},
      {"uint8", "-1", "UintParser: contains an illegal number, error:-1"},
      {"uint8", "0", "UintParser: contains an illegal number, error:0", 0},  // 0 / 0
      {"uint8", "1e50", "UintParser: stof() failed, error:stof argument out of range"},
      {"uint64", "1", "UintParser: contains an illegal number, error:1"},
      {"int8", "128", "IntParser: contains an illegal number, error:128"},
      {"int16", "x", "IntParser: contains an illegal number, error:x"},
      {"float32", "x", "FloatParser: contains an illegal number, error:x"},
      {"float32", "1e50", "FloatParser: stof() out of range, error:stof argument out of range"},
      {"double", "1e400", "DoubleParser: stod() out of range, error:stod argument out of range"},
      {"IP", "192.168.1", "IPv4Parser: ip address, wrong format."},
      {"IP", "192..168.1", "IPv4Parser: contains an illegal number"},
      {"IP", "192.168.1.256", "IPv4Parser: contains an illegal number"},
      {"MAC", "0:1:2:3:4", "MacParser: ip address, wrong format."},
      {"MAC", "00:1A:2B:3C:4D:5E", "MacParser: contains an illegal number"}};
  for (const Case& c : cases) {
    try {
      MakeStrParser(c.type)->ParseToBytes(c.text, c.coefficient);
      ADD_FAILURE() << c.type << " took " << c.text;
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), c.result);
    }
  }
}

}  // namespace
}  // namespace varkel
