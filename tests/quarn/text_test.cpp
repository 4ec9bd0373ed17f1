#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <variant>

#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Platform/src/text_number.h"

namespace quarn::lidar {
namespace {

// The number, or the words of the error.
template <typename T>
using Outcome = std::variant<T, std::string>;

template <typename T>
Outcome<T> Try(const std::function<T()>& read) {
  try {
    return read();
  } catch (const std::invalid_argument& error) {
    return std::string("invalid: ") + error.what();
  } catch (const std::out_of_range& error) {
    return std::string("range: ") + error.what();
  }
}

TEST(TextToInt, Table) {
  const std::string invalid = "invalid: invalid stoi argument";
  const std::string range = "range: stoi argument out of range";
  struct {
    std::string text;
    int base;
    Outcome<int> expected;
  } const cases[] = {
      {"12", 10, 12},
      {" \t\n\v\f\r-12xyz", 10, -12},
      {"+7", 10, 7},
      {"0x1F", 16, 31},
      {"-0X1f", 16, -31},
      {"1F", 16, 31},
      {"0x0A", 0, 10},
      {"010", 0, 8},
      {"010", 10, 10},
      {"0", 0, 0},
      {"09", 0, 0},
      {"0x", 16, 0},
      {"0xg", 0, 0},
      {"0x1F", 10, 0},
      {"2147483647", 10, 2147483647},
      {"-2147483648", 10, std::numeric_limits<int>::min()},
      {"2147483648", 10, range},
      {"-2147483649", 10, range},
      {"0xFFFFFFFF", 16, range},
      {"99999999999999999999999", 10, range},
      {"", 10, invalid},
      {"  ", 10, invalid},
      {"-", 10, invalid},
      {"+-5", 10, invalid},
      {"- 5", 10, invalid},
      {"zz", 16, invalid},
      {"5", 1, invalid},
      {"5", 37, invalid},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Try<int>([&] { return TextToInt(c.text, c.base); }), c.expected) << c.text << " " << c.base;
  }
}

TEST(TextToReal, Table) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  struct {
    std::string text;
    double expected;
  } const cases[] = {
      {"1.5", 1.5},
      {" \n+2.25 mm", 2.25},
      {"-.5", -0.5},
      {"1e3", 1000},
      {"1e", 1},
      {"0x1.8p1", 3.0},
      {"0X10", 16},
      {"0x.8", 0.5},
      {"0x", 0},
      {"1,5", 1},
      {"-0x1p-2", -0.25},
      {"inf", kInfinity},
      {"-Infinity", -kInfinity},
      {"1e-40", 1e-40},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TextToDouble(c.text), c.expected) << c.text;
    EXPECT_EQ(TextToFloat(c.text), static_cast<float>(c.expected)) << c.text;
  }
  EXPECT_TRUE(std::isnan(TextToDouble("nan")));
  EXPECT_TRUE(std::signbit(TextToFloat("-0")));
  EXPECT_EQ(TextToFloat("16777217"), 16777216.0F);  // rounded once, as a float

  for (const std::string text : {"", " ", "x", "+-1", "--1", ".", "e5", "+ 1"}) {
    EXPECT_EQ(Try<double>([&] { return TextToDouble(text); }),
              Outcome<double>("invalid: invalid stod argument"))
        << text;
    EXPECT_EQ(Try<float>([&] { return TextToFloat(text); }), Outcome<float>("invalid: invalid stof argument"))
        << text;
  }
  for (const std::string text : {"1e400", "-1e400", "1e-400", "0x1p5000"}) {
    EXPECT_EQ(Try<double>([&] { return TextToDouble(text); }),
              Outcome<double>("range: stod argument out of range"))
        << text;
  }
  EXPECT_EQ(Try<float>([] { return TextToFloat("1e39"); }),
            Outcome<float>("range: stof argument out of range"));
  EXPECT_EQ(TextToDouble("0e-999"), 0.0);
}

TEST(HexLine, EveryByteOnce) {
  std::vector<std::uint8_t> bytes;
  std::string expected;
  for (int value = 0; value < 256; ++value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    char text[8];
    std::snprintf(text, sizeof(text), "%02x ", value);
    expected += text;
  }
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    EXPECT_EQ(HexLine(std::span(bytes).last(size)), expected.substr(3 * (bytes.size() - size)));
  }
}

}  // namespace
}  // namespace quarn::lidar
