#include "libquarn/Platform/src/text_number.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace quarn::lidar {
namespace {

// The number, or the error's text.
template <typename Read>
std::string Outcome(Read read, const char* text) {
  try {
    return std::to_string(read(text));
  } catch (const std::logic_error& error) {
    return error.what();
  }
}

TEST(TextNumber, ReadsOrSaysWhyNot) {
  const struct {
    const char *text, *as_int, *as_float, *as_double;
  } kCases[] = {{"-2147483648", "-2147483648", "-2147483648.000000", "-2147483648.000000"},
                {"2147483648", "stoi argument out of range", "2147483648.000000", "2147483648.000000"},
                {" 16777217 mm", "16777217", "16777216.000000", "16777217.000000"},
                {"010", "8", "10.000000", "10.000000"},
                {"0x.8", "0", "0.500000", "0.500000"},
                {"1e-40", "1", "0.000000", "0.000000"},
                {"1e400", "1", "stof argument out of range", "stod argument out of range"},
                {"+-1", "invalid stoi argument", "invalid stof argument", "invalid stod argument"}};
  for (const auto& c : kCases) {
    EXPECT_EQ(Outcome([](const std::string& text) { return TextToInt(text, 0); }, c.text), c.as_int);
    EXPECT_EQ(Outcome(TextToFloat, c.text), c.as_float);
    EXPECT_EQ(Outcome(TextToDouble, c.text), c.as_double);
  }
}

}  // namespace
}  // namespace quarn::lidar
