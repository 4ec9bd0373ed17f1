#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace quarn::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// Each byte depends on its position.
inline Bytes Counting(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + 3);
  return bytes;
}

}  // namespace quarn::test
