#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>

#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Platform/src/text_number.h"

namespace quarn::lidar {
namespace {

// The number, or the words of the error.
template <typename T>
std::string Try(const std::function<T()>& read) {
  try {
    return std::to_string(read());
  } catch (const std::invalid_argument& error) {
    return std::string("invalid: ") + error.what();
  } catch (const std::out_of_range& error) {
    return std::string("range: ") + error.what();
  }
}

TEST(TextToInt, Table) {
  const struct {
    std::string text;
    int base;
    int expected;
  } kCases[] = {
      {" \t\n\v\f\r-12xyz", 10, -12},
      {"+7", 10, 7},
      {"-0X1f", 16, -31},
      {"1F", 16, 31},
      {"0x0A", 0, 10},
      {"010", 0, 8},
      {"010", 10, 10},
      {"09", 0, 0},
      {"0x", 16, 0},
      {"0xg", 0, 0},
      {"2147483647", 10, 2147483647},
      {"-2147483648", 10, std::numeric_limits<int>::min()},
  };
  for (const auto& c : kCases) EXPECT_EQ(TextToInt(c.text, c.base), c.expected) << c.text << " " << c.base;
  for (const std::string text : {"2147483648", "-2147483649", "0xFFFFFFFF", "99999999999999999999999"}) {
    EXPECT_EQ(Try<int>([&] { return TextToInt(text, 0); }), "range: stoi argument out of range") << text;
  }
  for (const std::string text : {"", "  ", "-", "+-5", "- 5", "zz"}) {
    EXPECT_EQ(Try<int>([&] { return TextToInt(text, 16); }), "invalid: invalid stoi argument") << text;
  }
  for (const int base : {1, 37}) EXPECT_THROW(TextToInt("5", base), std::invalid_argument);
}

TEST(TextToReal, Table) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::pair<std::string, double> kCases[] = {
      {" \n+2.25 mm", 2.25}, {"-.5", -0.5}, {"1e3", 1000}, {"1e", 1},          {"0x1.8p1", 3},
      {"0X.8", 0.5},         {"0x", 0},     {"1,5", 1},    {"-0x1p-2", -0.25}, {"-Infinity", -kInfinity},
      {"1e-40", 1e-40},
  };
  for (const auto& [text, expected] : kCases) {
    EXPECT_EQ(TextToDouble(text), expected) << text;
    EXPECT_EQ(TextToFloat(text), static_cast<float>(expected)) << text;
  }
  EXPECT_TRUE(std::isnan(TextToDouble("nan")) && std::signbit(TextToFloat("-0")));
  EXPECT_EQ(TextToFloat("16777217"), 16777216.0F);  // rounded once, as a float
  EXPECT_EQ(TextToDouble("0e-999"), 0.0);
  for (const std::string text : {"", " ", "x", "+-1", "--1", ".", "e5", "+ 1"}) {
    EXPECT_EQ(Try<double>([&] { return TextToDouble(text); }), "invalid: invalid stod argument") << text;
    EXPECT_EQ(Try<float>([&] { return TextToFloat(text); }), "invalid: invalid stof argument") << text;
  }
  for (const std::string text : {"1e400", "-1e400", "1e-400", "0x1p5000"}) {
    EXPECT_EQ(Try<double>([&] { return TextToDouble(text); }), "range: stod argument out of range") << text;
  }
  EXPECT_EQ(Try<float>([] { return TextToFloat("1e39"); }), "range: stof argument out of range");
}

TEST(HexLine, EveryByteAndEverySize) {
  std::vector<std::uint8_t> bytes;
  std::string expected;
  for (unsigned value = 0; value < 256; ++value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    expected.append({"0123456789abcdef"[value / 16], "0123456789abcdef"[value % 16], ' '});
  }
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    EXPECT_EQ(HexLine(std::span(bytes).last(size)), expected.substr(3 * (bytes.size() - size)));
  }
}

}  // namespace
}  // namespace quarn::lidar
