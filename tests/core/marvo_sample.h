#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "libquarn/Platform/src/byte_order.h"

namespace varkel::test {

struct Range {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
};

/// A package with the given header fields (components in the order of their flags) and `data_size` bytes of
/// data, whose values depend on their position.
inline std::vector<std::uint8_t> MarvoPackage(std::uint8_t flags, const std::array<Range, 5>& ranges,
                                              std::size_t data_size) {
  std::vector<std::uint8_t> package = {'Q', 'R', 'N', 'A', 0x10, 0x27, 0, 0, flags};
  package.resize(56 + data_size);
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    quarn::lidar::StoreLittleEndian(package, 12 + 8 * i, ranges[i].offset);
    quarn::lidar::StoreLittleEndian(package, 16 + 8 * i, ranges[i].size);
  }
  for (std::size_t i = 56; i < package.size(); ++i) package[i] = static_cast<std::uint8_t>((i - 56) * 31);
  return package;
}

/// All five components, each with a different size.
inline std::vector<std::uint8_t> FullMarvoPackage() {
  return MarvoPackage(31, {{{0, 1500}, {1500, 2048}, {3548, 3000}, {6548, 1024}, {7572, 10}}}, 7582);
}

}  // namespace varkel::test
