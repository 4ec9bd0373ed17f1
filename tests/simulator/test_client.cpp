#include "tests/simulator/test_client.h"

#include <thread>

namespace varkel::sim {

using quarn::lidar::KtcClient;

bool Eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

std::unique_ptr<KtcClient> Connect(const SimulatedSensor& sensor, std::uint8_t version) {
  auto client = std::make_unique<KtcClient>("127.0.0.1", sensor.port(), false, 0, version, "", "", "",
                                            kExchangeTimeoutMs, kExchangeTimeoutMs, 5.0F, 0);
  return Eventually([&] { return client->IsOpen(); }) ? std::move(client) : nullptr;
}

RawConnection::RawConnection(std::uint16_t port) : socket_(quarn::platform::CreateTcpSocket()) {
  connected_ = quarn::platform::ConnectSocket(socket_, "127.0.0.1", port) == 0;
}

RawConnection::~RawConnection() {
  quarn::platform::CloseSocket(socket_);
}

bool RawConnection::Send(const std::vector<std::uint8_t>& bytes) {
  return connected_ && quarn::platform::SendBytes(socket_, bytes, 0) == static_cast<int>(bytes.size());
}

std::vector<std::uint8_t> RawConnection::ReceiveToEnd() {
  quarn::platform::SetSocketReceiveTimeout(socket_, 10'000);
  std::vector<std::uint8_t> all;
  std::vector<std::uint8_t> block(256);
  for (int size = 0; (size = quarn::platform::ReceiveBytes(socket_, block, 0)) > 0;) {
    all.insert(all.end(), block.begin(), block.begin() + size);
  }
  return all;
}

}  // namespace varkel::sim
