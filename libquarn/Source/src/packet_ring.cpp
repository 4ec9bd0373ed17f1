#include "libquarn/Source/src/packet_ring.h"

#include <algorithm>

namespace quarn::lidar {

void PacketRing::Push(std::span<const std::uint8_t> bytes, bool extend) {
  const std::lock_guard lock(mutex_);
  while (!bytes.empty()) {
    Slot& slot = extend && count_ > 0 && Newest().length < kMaxPacketSize ? Newest() : AddSlot();
    const std::span<const std::uint8_t> part =
        bytes.first(std::min(bytes.size(), kMaxPacketSize - slot.length));
    std::copy(part.begin(), part.end(), slot.data.begin() + slot.length);
    slot.length += static_cast<std::uint32_t>(part.size());
    bytes = bytes.subspan(part.size());
    extend = false;
  }
  changed_.notify_one();
}

int PacketRing::Take(std::span<std::uint8_t> buffer, std::chrono::microseconds timeout) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, timeout, [this] { return count_ > 0 || closed_; });
  if (closed_) {
    return -1;
  }
  if (count_ == 0) {
    return 0;
  }
  Slot& slot = *slots_[oldest_];
  const std::size_t size = std::min<std::size_t>(buffer.size(), slot.length - slot.taken);
  std::copy_n(slot.data.begin() + slot.taken, size, buffer.begin());
  slot.taken += static_cast<std::uint32_t>(size);
  if (slot.taken == slot.length) {
    oldest_ = (oldest_ + 1) % slots_.size();
    --count_;
  }
  return static_cast<int>(size);
}

void PacketRing::Clear() {
  const std::lock_guard lock(mutex_);
  count_ = 0;
}

void PacketRing::Close() {
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }
  changed_.notify_all();
}

void PacketRing::Open() {
  const std::lock_guard lock(mutex_);
  closed_ = false;
  count_ = 0;
}

std::uint64_t PacketRing::dropped() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

PacketRing::Slot& PacketRing::Newest() {
  return *slots_[(oldest_ + count_ - 1) % slots_.size()];
}

PacketRing::Slot& PacketRing::AddSlot() {
  if (count_ == slots_.size()) {
    oldest_ = (oldest_ + 1) % slots_.size();
    --count_;
    ++dropped_;
  }
  std::unique_ptr<Slot>& slot = slots_[(oldest_ + count_) % slots_.size()];
  if (!slot) {
    slot = std::make_unique<Slot>();
  }
  slot->length = 0;
  slot->taken = 0;
  ++count_;
  return *slot;
}

}  // namespace quarn::lidar
