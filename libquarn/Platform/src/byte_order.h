#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quarn::lidar {

/// Writes `value` most significant byte first into `bytes` from `offset` on.
/// The caller guarantees that `sizeof(T)` bytes fit from `offset` on.
template <std::unsigned_integral T>
constexpr void StoreBigEndian(std::span<std::uint8_t> bytes, std::size_t offset, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    const std::size_t shift = 8 * (sizeof(T) - 1 - i);
    bytes[offset + i] = static_cast<std::uint8_t>(value >> shift);
  }
}

/// Reads an unsigned number stored most significant byte first at `offset`. The caller guarantees that
/// `bytes` has `sizeof(T)` bytes from `offset` on.
template <std::unsigned_integral T>
constexpr T LoadBigEndian(std::span<const std::uint8_t> bytes, std::size_t offset) {
  T value = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>((std::uint64_t{value} << 8U) | bytes[offset + i]);
  }
  return value;
}

/// The same with the least significant byte first.
template <std::unsigned_integral T>
constexpr void StoreLittleEndian(std::span<std::uint8_t> bytes, std::size_t offset, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
}

template <std::unsigned_integral T>
constexpr T LoadLittleEndian(std::span<const std::uint8_t> bytes, std::size_t offset) {
  T value = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>(value | (std::uint64_t{bytes[offset + i]} << (8 * i)));
  }
  return value;
}

}  // namespace quarn::lidar
