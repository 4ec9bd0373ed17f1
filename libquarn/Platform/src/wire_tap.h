#pragma once

#include <cstdint>
#include <span>

namespace quarn::lidar {

enum class WireDirection : std::uint8_t { kToSensor, kFromSensor };

/// Observes the bytes of one connection as they are sent and received, in pieces of any size.
class WireTap {
 public:
  virtual ~WireTap() = default;
  WireTap(const WireTap&) = delete;
  WireTap& operator=(const WireTap&) = delete;

  /// Called in the middle of an exchange, on its thread, one call at a time. `bytes` is not empty and only
  /// valid during the call.
  virtual void Pass(WireDirection direction, std::span<const std::uint8_t> bytes) noexcept = 0;

 protected:
  WireTap() = default;
};

}  // namespace quarn::lidar
