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

/// A queue of packets between the receiving thread and its reader; when full it drops the oldest packet.
/// Thread-safe. A slot is allocated when it is first used.
class PacketRing {
 public:
  explicit PacketRing(std::size_t slots) : slots_(slots) {}

  /// Adds a packet; one larger than a slot becomes several. With `extend` the bytes continue the packet
  /// pushed last and are appended to it if it is still queued and has room.
  void Push(std::span<const std::uint8_t> bytes, bool extend = false);

  /// Takes the oldest packet, or its first bytes if `buffer` is smaller (the next call returns the rest): the
  /// number of bytes, 0 on time-out, -1 if the ring is closed.
  int Take(std::span<std::uint8_t> buffer, std::chrono::microseconds timeout);

  void Clear();

  /// Until Open, every Take returns -1, waiting ones included, even with packets queued.
  void Close();
  void Open();

  std::uint64_t dropped() const;

 private:
  struct Slot {
    std::array<std::uint8_t, kMaxPacketSize> data;
    std::uint32_t length = 0;
    std::uint32_t taken = 0;  ///< bytes already handed to a reader
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
