#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "libquarn/Source/src/udp_packet.h"

namespace quarn::lidar {

/// Packets between the thread that receives and the one that reads: a full ring drops its oldest packet.
/// Thread-safe. A slot's memory is taken when it is first filled.
class PacketRing {
 public:
  explicit PacketRing(std::size_t slots) : slots_(slots) {}

  /// Adds a packet; more than a slot holds becomes several. With `extend` the bytes belong to the packet that
  /// was pushed last: they are appended to it as long as it is there and has room.
  void Push(std::span<const std::uint8_t> bytes, bool extend = false);

  /// The oldest packet's bytes, or its first ones when `buffer` is smaller (the next call gives the rest). 0
  /// when none came within the time, -1 when the ring is closed.
  int Take(std::span<std::uint8_t> buffer, std::chrono::microseconds timeout);

  void Clear();

  /// A waiting Take returns -1, also with packets left, until Open.
  void Close();
  void Open();

  std::uint64_t dropped() const;

 private:
  struct Slot {
    std::array<std::uint8_t, kMaxPacketSize> data;
    std::uint32_t length = 0;
    std::uint32_t taken = 0;  ///< how many of them a reader has had
  };

  Slot& Newest();
  Slot& AddSlot();

  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::vector<std::unique_ptr<Slot>> slots_;
  std::size_t oldest_ = 0;
  std::size_t count_ = 0;
  std::uint64_t dropped_ = 0;
  bool closed_ = false;
};

}  // namespace quarn::lidar
