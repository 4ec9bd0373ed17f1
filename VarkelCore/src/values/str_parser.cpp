#include "VarkelCore/src/values/str_parser.h"

#include <bit>
#include <cmath>
#include <exception>
#include <functional>
#include <limits>
#include <map>
#include <stdexcept>
#include <utility>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/byte_text.h"
#include "libquarn/Platform/src/text_number.h"
#include "libquarn/Platform/src/trace.h"

namespace varkel {

namespace {

using quarn::lidar::StoreBigEndian;

[[noreturn]] void Refuse(const std::string& text) {
  throw std::invalid_argument(text);
}

bool Converts(const std::function<void()>& conversion) {
  try {
    conversion();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void RequireNumber(const std::string& codec, const std::string& text) {
  const bool is_number =
      Converts([&] { quarn::lidar::TextToDouble(text); }) || Converts([&] { quarn::lidar::TextToInt(text); });
  if (!is_number) Refuse(codec + ": contains an illegal number, error:" + text);
}

float FloatOf(const std::string& codec, const std::string& text) {
  try {
    return quarn::lidar::TextToFloat(text);
  } catch (const std::exception& error) {
    Refuse(codec + ": stof() failed, error:" + error.what());
  }
}

/// The low `length` bytes of `value`, most significant first.
std::vector<std::uint8_t> LowBytes(std::uint64_t value, std::uint64_t length) {
  std::vector<std::uint8_t> whole(sizeof(value));
  StoreBigEndian<std::uint64_t>(whole, 0, value);
  const auto skipped = static_cast<std::ptrdiff_t>(sizeof(value) - length);
  return {whole.begin() + skipped, whole.end()};
}

std::vector<std::uint8_t> AddressBytes(const std::string& codec, const std::string& text,
                                       const quarn::lidar::ByteTextFormat& format) {
  quarn::lidar::ByteText address = quarn::lidar::ReadByteText(text, format);
  if (address.fault == quarn::lidar::ByteTextFault::kCount) Refuse(codec + ": ip address, wrong format.");
  if (!address) Refuse(codec + ": contains an illegal number");
  return std::move(address.bytes);
}

}  // namespace

std::vector<std::uint8_t> UintParser::ParseToBytes(const std::string& text, float coefficient) {
  RequireNumber("UintParser", text);
  const float scaled = FloatOf("UintParser", text) / coefficient;
  const std::uint32_t limit = 1U << (8 * parser_length % 32);
  // Written such that NaN (0 / 0) is refused as well.
  if (!(scaled >= 0.0F && scaled < static_cast<float>(limit))) {
    Refuse("UintParser: contains an illegal number, error:" + text);
  }
  return LowBytes(static_cast<std::uint64_t>(scaled), parser_length);
}

std::vector<std::uint8_t> IntParser::ParseToBytes(const std::string& text, float coefficient) {
  RequireNumber("IntParser", text);
  const float scaled = FloatOf("IntParser", text) / coefficient;
  if (parser_length != 1 && parser_length != 2 && parser_length != 4 && parser_length != 8) {
    Refuse("intParser: parser_length is not supported, error:" + std::to_string(parser_length));
  }
  const std::int64_t highest = std::numeric_limits<std::int64_t>::max() >> (64 - 8 * parser_length);
  const std::int64_t lowest = -highest - 1;
  if (!(scaled <= static_cast<float>(highest) && scaled >= static_cast<float>(lowest))) {
    Refuse("IntParser: contains an illegal number, error:" + text);
  }
  // The upper bound is rounded up to 2^63 as a float, which a 64-bit integer does not hold.
  const auto value = scaled < 0x1p63F ? static_cast<std::int64_t>(scaled) : highest;
  return LowBytes(static_cast<std::uint64_t>(value), parser_length);
}

std::vector<std::uint8_t> FloatParser::ParseToBytes(const std::string& text, float coefficient) {
  RequireNumber("FloatParser", text);
  float value = 0.0F;
  try {
    value = quarn::lidar::TextToFloat(text);
  } catch (const std::out_of_range& error) {
    Refuse(std::string("FloatParser: stof() out of range, error:") + error.what());
  } catch (const std::exception& error) {
    Refuse(std::string("FloatParser: stof() failed, error:") + error.what());
  }
  std::vector<std::uint8_t> bytes(sizeof(value));
  StoreBigEndian<std::uint32_t>(bytes, 0, std::bit_cast<std::uint32_t>(value / coefficient));
  return bytes;
}

std::vector<std::uint8_t> DoubleParser::ParseToBytes(const std::string& text, float coefficient) {
  RequireNumber("DoubleParser", text);
  double value = 0.0;
  try {
    value = quarn::lidar::TextToDouble(text);
  } catch (const std::out_of_range& error) {
    Refuse(std::string("DoubleParser: stod() out of range, error:") + error.what());
  } catch (const std::exception& error) {
    Refuse(std::string("DoubleParser: stod() failed, error:") + error.what());
  }
  std::vector<std::uint8_t> bytes(sizeof(value));
  StoreBigEndian<std::uint64_t>(bytes, 0,
                                std::bit_cast<std::uint64_t>(value / static_cast<double>(coefficient)));
  return bytes;
}

std::vector<std::uint8_t> IPv4Parser::ParseToBytes(const std::string& text, float /*coefficient*/) {
  return AddressBytes("IPv4Parser", text, quarn::lidar::kIpv4Text);
}

std::vector<std::uint8_t> MacParser::ParseToBytes(const std::string& text, float /*coefficient*/) {
  return AddressBytes("MacParser", text, {':', 6});
}

std::vector<std::uint8_t> RawParser::ParseToBytes(const std::string& /*text*/, float /*coefficient*/) {
  quarn::platform::TraceLine("not developed");
  return {};
}

std::unique_ptr<StrParser> MakeStrParser(const std::string& var_type) {
  using Factory = std::unique_ptr<StrParser> (*)();
  static const std::map<std::string, Factory> factories = {
      {"IP", []() -> std::unique_ptr<StrParser> { return std::make_unique<IPv4Parser>(); }},
      {"MAC", []() -> std::unique_ptr<StrParser> { return std::make_unique<MacParser>(); }},
      {"uint8", []() -> std::unique_ptr<StrParser> { return std::make_unique<UintParser>(1); }},
      {"uint16", []() -> std::unique_ptr<StrParser> { return std::make_unique<UintParser>(2); }},
      {"uint32", []() -> std::unique_ptr<StrParser> { return std::make_unique<UintParser>(4); }},
      {"uint64", []() -> std::unique_ptr<StrParser> { return std::make_unique<UintParser>(8); }},
      {"int8", []() -> std::unique_ptr<StrParser> { return std::make_unique<IntParser>(1); }},
      {"int16", []() -> std::unique_ptr<StrParser> { return std::make_unique<IntParser>(2); }},
      {"int32", []() -> std::unique_ptr<StrParser> { return std::make_unique<IntParser>(4); }},
      {"int64", []() -> std::unique_ptr<StrParser> { return std::make_unique<IntParser>(8); }},
      {"float32", []() -> std::unique_ptr<StrParser> { return std::make_unique<FloatParser>(); }},
      {"double", []() -> std::unique_ptr<StrParser> { return std::make_unique<DoubleParser>(); }},
      {"raw", []() -> std::unique_ptr<StrParser> { return std::make_unique<RawParser>(); }},
  };
  const auto factory = factories.find(var_type);
  if (factory == factories.end()) {
    quarn::platform::TraceLine("DEBUG(): not support the format is " + var_type);
    return nullptr;
  }
  return factory->second();
}

}  // namespace varkel
