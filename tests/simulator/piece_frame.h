#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace varkel::sim {

/// A piece of a firmware package. The checksum is that of the data unless one is given.
struct Piece {
  std::uint32_t reserved = 0;
  std::uint32_t number = 1;
  std::uint32_t count = 1;
  std::optional<std::uint32_t> checksum{};
  std::vector<std::uint8_t> data{};
};

/// The whole frame of version 1.0 that carries it.
std::vector<std::uint8_t> PieceFrame(std::uint8_t command, const Piece& piece);

}  // namespace varkel::sim
