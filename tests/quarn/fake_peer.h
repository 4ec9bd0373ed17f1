#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/socket.h"
#include "tests/quarn/bytes.h"
#include "tests/quarn/test_support.h"

namespace quarn::test {

struct Request {
  std::uint8_t cmd = 0;
  Bytes payload;
};

/// What the peer does on a request: sends `bytes` (empty: silence) and then may close the connection.
struct Answer {
  Bytes bytes;
  bool close = false;
};

/// A sensor that does what the test says, right or wrong. Serves one connection at a time; its clients must
/// be destroyed before it.
class FakePeer {
 public:
  using Handler = std::function<Answer(const Request&)>;

  FakePeer(std::uint8_t version, Handler handler)
      : layout_(lidar::KtcParser(version).parser()->layout()),
        handler_(std::move(handler)),
        listener_(platform::TcpListener::Listen(kLoopback, 0)),
        thread_([this](const std::stop_token& stop) { Serve(stop); }) {}

  std::uint16_t port() const { return listener_->port(); }
  int connections() const { return connections_; }

  std::vector<Request> Requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  /// A frame as a sensor sends it: a request's layout with a return code.
  static Bytes Reply(std::uint8_t version, std::uint8_t cmd, const Bytes& payload,
                     std::uint8_t return_code = 0) {
    const lidar::KtcParser parser(version);
    Bytes frame;
    parser.KtcStreamEncode(payload, frame, cmd);
    frame[parser.parser()->layout().return_code] = return_code;
    return frame;
  }

  static Answer Echo(const Request& request) { return {Reply(1, request.cmd, request.payload)}; }

 private:
  void Serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      const platform::SocketHandle connection = listener_->Accept(20);
      if (connection == platform::kInvalidSocket) continue;
      ++connections_;
      while (Step(connection)) continue;
      platform::CloseSocket(connection);
    }
  }

  bool Step(platform::SocketHandle connection) {
    Bytes header(layout_.header_size);
    if (!ReadAll(connection, header)) return false;
    Request request{header[layout_.cmd],
                    Bytes(lidar::LoadBigEndian<std::uint32_t>(header, layout_.payload_length))};
    if (!ReadAll(connection, request.payload)) return false;
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(request);
    }
    const Answer answer = handler_(request);
    std::span<const std::uint8_t> rest = answer.bytes;
    while (!rest.empty()) {
      const int sent = platform::SendBytes(connection, rest, 0);
      if (sent <= 0) return false;
      rest = rest.subspan(static_cast<std::size_t>(sent));
    }
    return !answer.close;
  }

  static bool ReadAll(platform::SocketHandle connection, std::span<std::uint8_t> bytes) {
    while (!bytes.empty()) {
      const int received = platform::ReceiveBytes(connection, bytes, 0);
      if (received <= 0) return false;
      bytes = bytes.subspan(static_cast<std::size_t>(received));
    }
    return true;
  }

  const lidar::KtcLayout layout_;
  const Handler handler_;
  const std::unique_ptr<platform::TcpListener> listener_;
  std::atomic<int> connections_{0};
  mutable std::mutex mutex_;
  std::vector<Request> requests_;
  std::jthread thread_;  // last: it uses all of the above
};

inline std::shared_ptr<lidar::KtcClient> MakeClient(std::uint16_t port, std::uint8_t version = 1,
                                                    std::uint32_t timeout_ms = 2000, float connect_s = 5,
                                                    const std::string& ip = kLoopback, std::uint32_t type = 0,
                                                    const lidar::KtcLimits& limits = {}) {
  return std::make_shared<lidar::KtcClient>(ip, port, false, type, version, "", "", "", timeout_ms,
                                            timeout_ms, connect_s, std::uint16_t{0}, limits);
}

/// A client connected to the peer.
inline std::shared_ptr<lidar::KtcClient> Connect(const FakePeer& peer, std::uint8_t version = 1,
                                                 std::uint32_t timeout_ms = 2000,
                                                 const lidar::KtcLimits& limits = {}) {
  auto client = MakeClient(peer.port(), version, timeout_ms, 5, kLoopback, 0, limits);
  EXPECT_TRUE(Eventually([&] { return client->IsOpen(); }));
  return client;
}

}  // namespace quarn::test
