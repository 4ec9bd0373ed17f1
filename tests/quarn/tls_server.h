#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "libquarn/Platform/src/socket.h"
#include "tests/support/child_process.h"

namespace quarn::test {

/// OpenSSL's own server program: answers every line with the line reversed.
class TlsServer {
 public:
  explicit TlsServer(const std::vector<std::string>& options) : process_(Command(options)) {
    const std::string address = process_.LineAfter("ACCEPT ");
    const std::size_t colon = address.rfind(':');
    port_ = colon == std::string::npos
                ? std::uint16_t{0}
                : static_cast<std::uint16_t>(std::strtoul(address.c_str() + colon + 1, nullptr, 10));
  }

  /// 0 when the server did not start.
  std::uint16_t port() const { return port_; }
  /// Waits for a line that begins with `start`; false when the server ends first.
  bool Says(const std::string& start) { return !process_.LineAfter(start).empty(); }

 private:
  static std::vector<std::string> Command(const std::vector<std::string>& options) {
    std::vector<std::string> command = {VARKEL_OPENSSL_PROGRAM, "s_server", "-accept", "127.0.0.1:0", "-rev"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }

  ChildProcess process_;
  std::uint16_t port_ = 0;
};

/// Passes one connection on to a port of the loopback, until it is told to break it.
class Relay {
 public:
  explicit Relay(std::uint16_t target)
      : listener_(platform::TcpListener::Listen("127.0.0.1", 0)), thread_([this, target] { Run(target); }) {}
  ~Relay() {
    stopping_ = true;
    thread_.join();
  }
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  std::uint16_t port() const { return listener_->port(); }

  /// Passes half of the next block that comes from the target, and closes.
  void CutNextBlock() { cutting_ = true; }

 private:
  void Run(std::uint16_t target) {
    platform::SocketHandle client = platform::kInvalidSocket;
    while (!stopping_ && client == platform::kInvalidSocket) {
      client = listener_->Accept(20);
    }
    const platform::SocketHandle server = platform::CreateTcpSocket();
    if (platform::ConnectSocket(server, "127.0.0.1", target) == 0) {
      while (!stopping_ && Pass(client, server, false) && Pass(server, client, cutting_)) {
      }
    }
    platform::CloseSocket(server);
    if (client != platform::kInvalidSocket) {
      platform::CloseSocket(client);
    }
  }

  static bool Pass(platform::SocketHandle from, platform::SocketHandle to, bool cut) {
    if (platform::WaitReadable(from, 1) == 0) {
      return true;
    }
    std::array<std::uint8_t, 16384> block{};
    const int received = platform::ReceiveBytes(from, block, 0);
    if (received <= 0) {
      return false;
    }
    const auto size = static_cast<std::size_t>(cut ? received / 2 : received);
    return platform::SendBytes(to, std::span(block).first(size), 0) == received;
  }

  const std::unique_ptr<platform::TcpListener> listener_;
  std::atomic<bool> stopping_{false};
  std::atomic<bool> cutting_{false};
  std::thread thread_;  // last: everything stands when it starts
};

}  // namespace quarn::test
