#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Platform/src/socket.h"
#include "simulator/src/simulated_sensor.h"

namespace varkel::sim {

inline constexpr std::uint32_t kExchangeTimeoutMs = 400;
inline constexpr std::chrono::seconds kPatience{10};

/// Waits for the condition; false when the patience ended.
bool Eventually(const std::function<bool()>& condition);

/// A connected client, or null.
std::unique_ptr<quarn::lidar::KtcClient> Connect(const SimulatedSensor& sensor, std::uint8_t version);

/// A connection without a client's manners.
class RawConnection {
 public:
  explicit RawConnection(std::uint16_t port);
  ~RawConnection();
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  bool connected() const { return connected_; }
  bool Send(const std::vector<std::uint8_t>& bytes);
  /// All bytes until the sensor closes.
  std::vector<std::uint8_t> ReceiveToEnd();

 private:
  quarn::platform::SocketHandle socket_;
  bool connected_ = false;
};

}  // namespace varkel::sim
