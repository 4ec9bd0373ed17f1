#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/src/return_code.h"

namespace varkel::sim {

/// Puts firmware packages together from their pieces and keeps the last whole one. Thread-safe; one transfer
/// at a time, so that a second client's first piece ends the first client's transfer.
class FirmwareStore {
 public:
  /// 64 MiB: more than any sensor's flash holds.
  static constexpr std::uint32_t kMostPieces = 64 * 1024;

  /// Takes one piece: a whole frame of version 1.0 under `command` (0xFF for four-byte commands) around a
  /// piece header and the data. Piece 1 begins a transfer. Anything but kSuccess ends it.
  ReturnCode Receive(std::uint8_t command, std::span<const std::uint8_t> frame);

  std::vector<std::uint8_t> Package() const;  ///< the last whole one, or empty

  /// A restart: the last whole package now runs. The version that runs, as shown; nothing while it is the
  /// one that the sensor left the factory with. A package that names no version leaves it.
  std::optional<std::string> Install();

 private:
  ReturnCode TakePiece(std::span<const std::uint8_t> piece);
  ReturnCode CheckPlace(std::uint32_t number, std::uint32_t count) const;
  void EndTransfer();

  mutable std::mutex mutex_;
  // Guarded by mutex_.
  std::uint32_t next_number_ = 1;
  std::uint32_t piece_count_ = 0;  // of the transfer under way
  std::vector<std::uint8_t> arriving_;
  std::vector<std::uint8_t> package_;
  std::optional<std::string> running_version_;
};

}  // namespace varkel::sim
