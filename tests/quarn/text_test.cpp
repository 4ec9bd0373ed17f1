#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Platform/src/text_number.h"

namespace quarn::lidar {
namespace {

// The number, or the words of the error.
template <typename Read>
std::string Outcome(Read read) {
  try {
    return std::to_string(read());
  } catch (const std::invalid_argument& error) {
    return std::string("invalid: ") + error.what();
  } catch (const std::out_of_range& error) {
    return std::string("range: ") + error.what();
  }
}

// What the standard library reads alike, fuzz/value_text.cpp compares.
TEST(TextNumber, ReadsOrSaysWhyNot) {
  const struct {
    std::string text, as_int, as_float, as_double;
  } kCases[] = {
      {" \t-12xyz", "-12", "-12.000000", "-12.000000"},
      {"0x1A", "26", "26.000000", "26.000000"},
      {"010", "8", "10.000000", "10.000000"},
      {"1,5", "1", "1.000000", "1.000000"},
      {"16777217", "16777217", "16777216.000000", "16777217.000000"},
      {"1e-40", "1", "0.000000", "0.000000"},
      {"2147483648", "range: stoi argument out of range", "2147483648.000000", "2147483648.000000"},
      {"+-1", "invalid: invalid stoi argument", "invalid: invalid stof argument",
       "invalid: invalid stod argument"},
      {"1e400", "1", "range: stof argument out of range", "range: stod argument out of range"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Outcome([&] { return TextToInt(c.text, 0); }), c.as_int) << c.text;
    EXPECT_EQ(Outcome([&] { return TextToFloat(c.text); }), c.as_float) << c.text;
    EXPECT_EQ(Outcome([&] { return TextToDouble(c.text); }), c.as_double) << c.text;
  }
}

TEST(HexLine, ShowsEveryByteWithABlankBehind) {
  EXPECT_EQ(HexLine(std::vector<std::uint8_t>{0x00, 0x09, 0x9A, 0xAF, 0xFF}), "00 09 9a af ff ");
}

}  // namespace
}  // namespace quarn::lidar
