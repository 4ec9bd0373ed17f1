#include "simulator/src/field_bytes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "libquarn/Platform/src/byte_text.h"
#include "simulator/src/raw_number.h"

namespace varkel::sim {
namespace {

using quarn::lidar::ByteTextFault;
using quarn::lidar::ReadByteText;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kMacSize = 6;
constexpr std::size_t kBoardNameSize = 8;
constexpr std::size_t kHardwareVersionSize = 16;
constexpr std::size_t kSoftwareVersionSize = 8;

[[noreturn]] void Refuse(const std::string& text, const std::string& reason) {
  throw std::invalid_argument("\"" + text + "\" " + reason);
}

/// All of `digits` as a number of at most `max`.
std::uint64_t Digits(const std::string& text, std::string_view digits, int base, std::uint64_t max) {
  std::uint64_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, base);
  if (error != std::errc{} || stop != end || value > max) {
    Refuse(text, "has the part \"" + std::string(digits) + "\", which is not a number from 0 to " +
                     std::to_string(max));
  }
  return value;
}

std::uint64_t Digits(const std::string& text, const std::ssub_match& digits, std::uint64_t max) {
  return Digits(text, digits.str(), 10, max);
}

void Append(Bytes& bytes, std::uint64_t value, std::size_t size) {
  const Bytes more = IntegerBytes(value, false, size);
  bytes.insert(bytes.end(), more.begin(), more.end());
}

void RequireSize(const std::string& text, std::size_t length, std::size_t size) {
  if (length != size) {
    Refuse(text,
           "needs a field of " + std::to_string(size) + " bytes, this one has " + std::to_string(length));
  }
}

Bytes IpBytes(const std::string& text, std::size_t length) {
  auto [fault, bytes] = ReadByteText(text, quarn::lidar::kIpv4Text);
  if (fault != ByteTextFault::kNone) Refuse(text, "is not an IP address");
  RequireSize(text, length, bytes.size());
  return bytes;
}

/// The displayed form, hexadecimal; the bytes after the first six are never shown.
Bytes MacBytes(const std::string& text, std::size_t length) {
  auto [fault, bytes] = ReadByteText(text, {':', kMacSize, 16});
  if (fault != ByteTextFault::kNone) Refuse(text, "is not a MAC address");
  if (length < kMacSize) RequireSize(text, length, kMacSize);
  bytes.resize(length);
  return bytes;
}

Bytes StringBytes(const std::string& text, std::size_t length) {
  if (text.size() > length) {
    Refuse(text, "is longer than its field of " + std::to_string(length) + " bytes");
  }
  Bytes bytes(text.begin(), text.end());
  bytes.resize(length);
  return bytes;
}

Bytes HardwareVersionBytes(const std::string& text, std::size_t length) {
  static const std::regex kForm(R"((.*) (\d+)\.(\d+)\.(\d+)\.(\d+) \((\d+)\))");
  std::smatch parts;
  if (!std::regex_match(text, parts, kForm)) {
    Refuse(text, "is not a version of the form NAME major.minor.patch.revision (build)");
  }
  RequireSize(text, length, kHardwareVersionSize);
  Bytes bytes = StringBytes(parts[1].str(), kBoardNameSize);
  for (std::size_t i = 2; i <= 5; ++i) Append(bytes, Digits(text, parts[i], 0xFF), 1);
  Append(bytes, Digits(text, parts[6], std::numeric_limits<std::uint32_t>::max()), 4);
  return bytes;
}

Bytes SoftwareVersionBytes(const std::string& text, std::size_t length) {
  static const std::regex kForm(R"((\d+)\.(\d+)\.(\d+)\.(\d+) \((\d+)-(\d+)-(\d+)\))");
  std::smatch parts;
  if (!std::regex_match(text, parts, kForm)) {
    Refuse(text, "is not a version of the form major.minor.patch.build (YYYY-MM-DD)");
  }
  RequireSize(text, length, kSoftwareVersionSize);
  Bytes bytes;
  for (std::size_t i = 1; i <= 4; ++i) Append(bytes, Digits(text, parts[i], 0xFF), 1);
  Append(bytes, Digits(text, parts[5], 0xFFFF), 2);
  for (std::size_t i = 6; i <= 7; ++i) Append(bytes, Digits(text, parts[i], 0xFF), 1);
  return bytes;
}

Bytes DurationBytes(const std::string& text, std::size_t length) {
  static const std::regex kForm(R"((\d+) h (\d+) min (\d+) s)");
  std::smatch parts;
  if (!std::regex_match(text, parts, kForm)) Refuse(text, "is not a duration of the form \"1 h 2 min 3 s\"");
  const std::uint64_t seconds = 3600 * Digits(text, parts[1], std::numeric_limits<std::uint32_t>::max()) +
                                60 * Digits(text, parts[2], 59) + Digits(text, parts[3], 59);
  if (seconds > BoundsOf({.size = sizeof(seconds)}, length).max) Refuse(text, "doesn't fit its field");
  return IntegerBytes(seconds, false, length);
}

double Decimal(const std::string& text) {
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end || !std::isfinite(value)) Refuse(text, "is not a number");
  return value;
}

/// Exact for texts without a fraction: a double can't carry every 64-bit number.
std::uint64_t UnscaledInteger(const std::string& text, const NumberType& type, const IntegerBounds& bounds) {
  const char* const end = text.data() + text.size();
  if (type.is_signed) {
    std::int64_t value = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc{} && stop == end && value >= bounds.min &&
        value <= static_cast<std::int64_t>(bounds.max)) {
      return static_cast<std::uint64_t>(value);
    }
  } else {
    std::uint64_t value = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc{} && stop == end && value <= bounds.max) return value;
  }
  Refuse(text,
         "is not a whole number from " + std::to_string(bounds.min) + " to " + std::to_string(bounds.max));
}

Bytes ScaledIntegerBytes(const std::string& text, const NumberType& type, std::size_t length,
                         float coefficient) {
  const IntegerBounds bounds = BoundsOf(type, length);
  if (coefficient == 1.0F) return IntegerBytes(UnscaledInteger(text, type, bounds), type.is_signed, length);

  const double raw = std::round(Decimal(text) / static_cast<double>(coefficient));
  // The bounds in double may round up to the next power of two, hence "less than".
  const double end =
      std::ldexp(1.0, static_cast<int>(8 * std::min(type.size, length)) - (type.is_signed ? 1 : 0));
  if (!(raw >= static_cast<double>(bounds.min) && raw < end)) {
    Refuse(text, "doesn't fit its field of " + std::to_string(length) + " bytes");
  }
  const std::uint64_t value =
      raw < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(raw)) : static_cast<std::uint64_t>(raw);
  return IntegerBytes(value, type.is_signed, length);
}

Bytes NumberBytes(const std::string& text, const NumberType& type, std::size_t length, float coefficient) {
  if (!type.is_float) return ScaledIntegerBytes(text, type, length, coefficient);
  RequireSize(text, length, type.size);
  return FloatBytes(Decimal(text) / static_cast<double>(coefficient), length);
}

}  // namespace

std::vector<std::uint8_t> FieldBytes(const std::string& var_type, const std::string& text, std::size_t length,
                                     float coefficient) {
  if (text.empty()) return Bytes(length);
  if (const auto number = NumberTypeOf(var_type)) return NumberBytes(text, *number, length, coefficient);
  if (var_type == "IP") return IpBytes(text, length);
  if (var_type == "MAC") return MacBytes(text, length);
  if (var_type == "string") return StringBytes(text, length);
  if (var_type == "HWVER") return HardwareVersionBytes(text, length);
  if (var_type == "SWVER_YMD") return SoftwareVersionBytes(text, length);
  if (var_type == "DT") return DurationBytes(text, length);
  Refuse(text, "can't be encoded: values of the type \"" + var_type + "\" are never shown");
}

}  // namespace varkel::sim
