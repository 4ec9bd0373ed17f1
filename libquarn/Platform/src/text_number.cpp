#include "libquarn/Platform/src/text_number.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace quarn::lidar {
namespace {

struct SignedText {
  bool negative = false;
  std::string_view digits;  // after white space and sign
};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsHexDigit(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

SignedText SplitSign(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  text.remove_prefix(start == std::string_view::npos ? text.size() : start);
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) {
    text.remove_prefix(1);
  }
  return {negative, text};
}

bool HasHexPrefix(std::string_view text) {
  return text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// "0x" without a digit after it is the number 0, followed by other text.
bool HasHexInteger(std::string_view text) {
  return HasHexPrefix(text) && text.size() > 2 && IsHexDigit(text[2]);
}

bool HasHexFraction(std::string_view text) {
  return HasHexInteger(text) ||
         (HasHexPrefix(text) && text.size() > 3 && text[2] == '.' && IsHexDigit(text[3]));
}

// from_chars reports the same for numbers that are too large and too small; both are out of range.
template <typename T>
T TextToReal(const std::string& text, const char* invalid, const char* out_of_range) {
  SignedText number = SplitSign(text);
  if (!number.digits.empty() && number.digits.front() == '-') {
    throw std::invalid_argument(invalid);
  }
  std::chars_format format = std::chars_format::general;
  if (HasHexFraction(number.digits)) {
    format = std::chars_format::hex;
    number.digits.remove_prefix(2);
  }
  T value = 0;
  const char* const end = number.digits.data() + number.digits.size();
  const auto [stop, error] = std::from_chars(number.digits.data(), end, value, format);
  if (error == std::errc::invalid_argument) {
    throw std::invalid_argument(invalid);
  }
  if (error != std::errc{}) {
    throw std::out_of_range(out_of_range);
  }
  return number.negative ? -value : value;
}

}  // namespace

int TextToInt(const std::string& text, int base) {
  auto [negative, digits] = SplitSign(text);
  if ((base == 0 || base == 16) && HasHexInteger(digits)) {
    base = 16;
    digits.remove_prefix(2);
  } else if (base == 0) {
    base = !digits.empty() && digits.front() == '0' ? 8 : 10;
  }
  if (base < 2 || base > 36) {
    throw std::invalid_argument("invalid stoi argument");
  }
  std::uint64_t magnitude = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
  if (error == std::errc::invalid_argument) {
    throw std::invalid_argument("invalid stoi argument");
  }
  const std::uint64_t limit = std::uint64_t{std::numeric_limits<std::int32_t>::max()} + (negative ? 1U : 0U);
  if (error != std::errc{} || magnitude > limit) {
    throw std::out_of_range("stoi argument out of range");
  }
  const auto value = static_cast<std::int64_t>(magnitude);
  return static_cast<int>(negative ? -value : value);
}

float TextToFloat(const std::string& text) {
  return TextToReal<float>(text, "invalid stof argument", "stof argument out of range");
}

double TextToDouble(const std::string& text) {
  return TextToReal<double>(text, "invalid stod argument", "stod argument out of range");
}

}  // namespace quarn::lidar
