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

/// Assembles firmware packages from their pieces and keeps the last complete one. Thread-safe; there is one
/// transfer at a time, so a second client's first piece ends the first client's transfer.
class FirmwareStore {
 public:
  /// 64 MiB: more than any sensor's flash holds.
  static constexpr std::uint32_t kMostPieces = 64 * 1024;

  /// Takes a piece: a complete frame of version 1.0 with `command` (0xFF for four-byte commands) that
  /// contains a piece header and the data. Piece 1 begins a transfer. Any result other than kSuccess ends it.
  ReturnCode Receive(std::uint8_t command, std::span<const std::uint8_t> frame);

  std::vector<std::uint8_t> Package() const;  ///< the last complete one, or empty

  /// Restarts with the last complete package. Returns the version that now runs, as displayed; nullopt while
  /// it is the factory's. A package that names no version leaves it unchanged.
  std::optional<std::string> Install();

 private:
  ReturnCode TakePiece(std::span<const std::uint8_t> piece);
  ReturnCode CheckPlace(std::uint32_t number, std::uint32_t count) const;
  void EndTransfer();

  mutable std::mutex mutex_;
  // Guarded by mutex_.
  std::uint32_t next_number_ = 1;
  std::uint32_t piece_count_ = 0;  // of the current transfer
  std::vector<std::uint8_t> arriving_;
  std::vector<std::uint8_t> package_;
  std::optional<std::string> running_version_;
};

}  // namespace varkel::sim
