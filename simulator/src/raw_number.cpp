#include "simulator/src/raw_number.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <map>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {

std::optional<NumberType> NumberTypeOf(const std::string& var_type) {
  static const std::map<std::string, NumberType> kTypes = {
      {"uint8", {false, false, 1}},  {"uint16", {false, false, 2}}, {"uint32", {false, false, 4}},
      {"uint64", {false, false, 8}}, {"int8", {false, true, 1}},    {"int16", {false, true, 2}},
      {"int32", {false, true, 4}},   {"int64", {false, true, 8}},   {"float32", {true, true, 4}},
      {"double", {true, true, 8}},
  };
  const auto found = kTypes.find(var_type);
  return found == kTypes.end() ? std::nullopt : std::optional<NumberType>(found->second);
}

IntegerBounds BoundsOf(const NumberType& type, std::size_t length) {
  const std::size_t size = std::min(type.size, length);
  if (size == 0) return {};
  const std::size_t unused_bits = 64 - 8 * size;
  if (!type.is_signed) return {0, std::numeric_limits<std::uint64_t>::max() >> unused_bits};
  return {std::numeric_limits<std::int64_t>::min() >> unused_bits,
          static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max() >> unused_bits)};
}

std::vector<std::uint8_t> IntegerBytes(std::uint64_t value, bool is_signed, std::size_t length) {
  const bool negative = is_signed && static_cast<std::int64_t>(value) < 0;
  std::vector<std::uint8_t> bytes(length, negative ? std::uint8_t{0xFF} : std::uint8_t{0});
  for (std::size_t i = 0; i < length && i < sizeof(value); ++i) {
    bytes[length - 1 - i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
  return bytes;
}

std::uint64_t IntegerOf(std::span<const std::uint8_t> bytes, bool is_signed) {
  const bool negative = is_signed && !bytes.empty() && (bytes.front() & 0x80U) != 0;
  std::uint64_t value = negative ? std::numeric_limits<std::uint64_t>::max() : 0;
  for (const std::uint8_t byte : bytes) value = (value << 8U) | byte;
  return value;
}

std::vector<std::uint8_t> FloatBytes(double value, std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  if (size == sizeof(float)) {
    quarn::lidar::StoreBigEndian(bytes, 0, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
  } else if (size == sizeof(double)) {
    quarn::lidar::StoreBigEndian(bytes, 0, std::bit_cast<std::uint64_t>(value));
  }
  return bytes;
}

double FloatOf(std::span<const std::uint8_t> bytes) {
  if (bytes.size() == sizeof(float)) {
    return std::bit_cast<float>(quarn::lidar::LoadBigEndian<std::uint32_t>(bytes, 0));
  }
  if (bytes.size() == sizeof(double)) {
    return std::bit_cast<double>(quarn::lidar::LoadBigEndian<std::uint64_t>(bytes, 0));
  }
  return 0.0;
}

}  // namespace varkel::sim
