#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace varkel::sim {

/// What a numeric `var_type` says about its bytes.
struct NumberType {
  bool is_float = false;
  bool is_signed = false;
  std::size_t size = 0;  ///< bytes
};

/// nullopt for types that are not numbers.
std::optional<NumberType> NumberTypeOf(const std::string& var_type);

/// The bounds of the whole numbers that fit a field of `length` bytes of that type.
struct IntegerBounds {
  std::int64_t min = 0;
  std::uint64_t max = 0;
};
IntegerBounds BoundsOf(const NumberType& type, std::size_t length);

/// `length` bytes, big-endian; a field longer than 8 bytes is extended with the sign.
/// `value` is the two's complement of a negative number.
std::vector<std::uint8_t> IntegerBytes(std::uint64_t value, bool is_signed, std::size_t length);

/// The big-endian number in `bytes`, as two's complement. Only the last 8 bytes of a longer field count; a
/// shorter one is extended with its sign if `is_signed`.
std::uint64_t IntegerOf(std::span<const std::uint8_t> bytes, bool is_signed);

/// IEEE 754, big-endian; `size` is 4 or 8.
std::vector<std::uint8_t> FloatBytes(double value, std::size_t size);
double FloatOf(std::span<const std::uint8_t> bytes);

}  // namespace varkel::sim
