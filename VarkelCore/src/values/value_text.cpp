#include "VarkelCore/src/values/value_text.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>
#include <type_traits>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel {
namespace {

using quarn::lidar::LoadBigEndian;
using ByteView = std::span<const std::uint8_t>;

constexpr std::size_t kMacSize = 6;
constexpr std::size_t kHardwareVersionSize = 16;
constexpr std::size_t kSoftwareVersionSize = 8;

// Two decimals, whatever the locale.
std::string Fixed(double value) {
  constexpr int kDecimals = 2;
  constexpr std::size_t kLongest = std::numeric_limits<double>::max_exponent10 + 8;
  std::array<char, kLongest> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, kDecimals).ptr;
  return {text.data(), end};
}

std::string Padded(unsigned value, std::size_t digits) {
  std::string text = std::to_string(value);
  if (text.size() < digits) {
    text.insert(0, digits - text.size(), '0');
  }
  return text;
}

std::string_view WithoutPadding(ByteView bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return text.substr(0, text.find_last_not_of('\0') + 1);
}

std::string Dotted(ByteView bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += text.empty() ? "" : ".";
    text += std::to_string(byte);
  }
  return text;
}

ValueText Ip(ByteView bytes, float /*coefficient*/) {
  return {ValueFault::kNone, Dotted(bytes)};
}

// Bytes up to and including 0x10 get a leading zero, so 0x10 shows as "010": the sensor's other tools show
// addresses this way, and users compare them.
ValueText Mac(ByteView bytes, float /*coefficient*/) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::uint8_t kLastWithZero = 0x10;
  if (bytes.size() < kMacSize) {
    return {ValueFault::kMacSize, {}};
  }
  std::string text;
  for (const std::uint8_t byte : bytes.first(kMacSize)) {
    text += text.empty() ? "" : ":";
    text += byte <= kLastWithZero ? "0" : "";
    if (byte >= kDigits.size()) {
      text += kDigits[byte / kDigits.size()];
    }
    text += kDigits[byte % kDigits.size()];
  }
  return {ValueFault::kNone, text};
}

// Board name, then major, minor, patch, revision, then the build number.
ValueText HardwareVersion(ByteView bytes, float /*coefficient*/) {
  constexpr std::size_t kNameSize = 8;
  constexpr std::size_t kNumbers = 4;
  if (bytes.size() != kHardwareVersionSize) {
    return {ValueFault::kVersionSize, {}};
  }
  std::string text(WithoutPadding(bytes.first(kNameSize)));
  text.append(" ").append(Dotted(bytes.subspan(kNameSize, kNumbers)));
  text.append(" (")
      .append(std::to_string(LoadBigEndian<std::uint32_t>(bytes, kNameSize + kNumbers)))
      .append(")");
  return {ValueFault::kNone, text};
}

// Major, minor, patch, build, then year, month, day.
ValueText SoftwareVersion(ByteView bytes, float /*coefficient*/) {
  constexpr std::size_t kNumbers = 4;
  constexpr std::size_t kMonth = 6;
  constexpr std::size_t kDay = 7;
  if (bytes.size() != kSoftwareVersionSize) {
    return {ValueFault::kVersionSize, {}};
  }
  std::string text = Dotted(bytes.first(kNumbers));
  text.append(" (").append(Padded(LoadBigEndian<std::uint16_t>(bytes, kNumbers), 4));
  text.append("-").append(Padded(bytes[kMonth], 2));
  text.append("-").append(Padded(bytes[kDay], 2)).append(")");
  return {ValueFault::kNone, text};
}

ValueText Text(ByteView bytes, float /*coefficient*/) {
  return {ValueFault::kNone, std::string(WithoutPadding(bytes))};
}

// A field may be narrower or wider than its type: the low-order bytes are used, and a narrow signed field is
// sign-extended.
template <std::integral T>
ValueText Integer(ByteView bytes, float coefficient) {
  std::uint64_t raw = std::is_signed_v<T> && bytes.front() >= 0x80 ? ~std::uint64_t{0} : 0;
  for (const std::uint8_t byte : bytes) {
    raw = (raw << 8U) | byte;
  }
  const T value = static_cast<T>(raw);
  if (coefficient == 1.0F) {
    return {ValueFault::kNone, std::to_string(value)};
  }
  return {ValueFault::kNone, Fixed(static_cast<double>(value) * static_cast<double>(coefficient))};
}

template <std::floating_point T, std::unsigned_integral Bits>
ValueText Real(ByteView bytes, float coefficient) {
  if (bytes.size() < sizeof(T)) {
    return {ValueFault::kNumberSize, {}};
  }
  const T value = std::bit_cast<T>(LoadBigEndian<Bits>(bytes.last(sizeof(T)), 0));
  return {ValueFault::kNone, Fixed(static_cast<double>(value) * static_cast<double>(coefficient))};
}

ValueText Duration(ByteView bytes, float /*coefficient*/) {
  constexpr std::uint64_t kMinute = 60;
  constexpr std::uint64_t kHour = 3600;
  std::uint64_t seconds = 0;
  for (const std::uint8_t byte : bytes) {
    seconds = (seconds << 8U) | byte;
  }
  std::string text = std::to_string(seconds / kHour);
  text.append(" h ").append(std::to_string(seconds % kHour / kMinute));
  text.append(" min ").append(std::to_string(seconds % kMinute)).append(" s");
  return {ValueFault::kNone, text};
}

struct Converter {
  std::string_view var_type;
  ValueText (*convert)(ByteView bytes, float coefficient);
};

constexpr std::array<Converter, 16> kConverters = {{
    {"IP", Ip},
    {"MAC", Mac},
    {"HWVER", HardwareVersion},
    {"SWVER_YMD", SoftwareVersion},
    {"string", Text},
    {"uint8", Integer<std::uint8_t>},
    {"uint16", Integer<std::uint16_t>},
    {"uint32", Integer<std::uint32_t>},
    {"uint64", Integer<std::uint64_t>},
    {"int8", Integer<std::int8_t>},
    {"int16", Integer<std::int16_t>},
    {"int32", Integer<std::int32_t>},
    {"int64", Integer<std::int64_t>},
    {"float32", Real<float, std::uint32_t>},
    {"double", Real<double, std::uint64_t>},
    {"DT", Duration},
}};

}  // namespace

ValueText BytesToText(const std::string& var_type, std::span<const std::uint8_t> bytes, float coefficient) {
  for (const Converter& converter : kConverters) {
    if (converter.var_type == var_type) {
      return bytes.empty() ? ValueText{ValueFault::kEmpty, {}} : converter.convert(bytes, coefficient);
    }
  }
  return {ValueFault::kUnsupportedType, {}};
}

}  // namespace varkel
