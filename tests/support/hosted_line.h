#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "libquarn/Platform/src/socket.h"
#include "libquarn/Platform/src/text_number.h"
#include "tests/support/line_blocks.h"

namespace quarn::test {

/// Replaces platform::PseudoTerminal on systems without pseudo-terminals: a serial port whose far end is held
/// by line_host.cpp, a program that runs beside the tests and listens on the TCP port in VARKEL_LINE_HOST.
class HostedLine {
 public:
  static std::unique_ptr<HostedLine> Create() { return std::make_unique<HostedLine>(); }

  HostedLine() {
    const char* port = std::getenv("VARKEL_LINE_HOST");
    platform::StartUpSockets();
    socket_ = platform::CreateTcpSocket();
    const auto number =
        port != nullptr ? static_cast<std::uint16_t>(lidar::TextToInt(port)) : std::uint16_t{0};
    const bool connected = number != 0 && platform::ConnectSocket(socket_, "127.0.0.1", number) == 0;
    const auto name = connected ? ReceiveBlock(socket_) : std::nullopt;
    if (!name || name->empty()) throw std::runtime_error("No line_host on the port of VARKEL_LINE_HOST");
    name_.assign(name->begin(), name->end());
  }
  ~HostedLine() {
    Pull();
    platform::CloseSocket(socket_);
    platform::CleanUpSockets();
  }
  HostedLine(const HostedLine&) = delete;
  HostedLine& operator=(const HostedLine&) = delete;

  const std::string& name() const { return name_; }

  int WaitReadable(std::int64_t /*the host waits*/) const { return pulled_ ? -1 : 1; }
  int Read(std::span<std::uint8_t> buffer) {
    const Bytes bytes = Ask(kReadLine, {static_cast<std::uint8_t>(buffer.size() >> 8U),
                                        static_cast<std::uint8_t>(buffer.size())});
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    return static_cast<int>(bytes.size());
  }
  bool Write(std::span<const std::uint8_t> bytes, std::int64_t /*the host's own patience*/ = 0) {
    return Ask(kWriteLine, Bytes(bytes.begin(), bytes.end())) == Bytes{1};
  }
  std::uint32_t BaudRate() {
    const Bytes rate = Ask(kLineRate);
    return rate.size() == sizeof(std::uint32_t) ? lidar::LoadBigEndian<std::uint32_t>(rate, 0) : 0;
  }
  void Pull() {
    if (!pulled_) Ask(kPullLine);
    pulled_ = true;
  }

 private:
  using Bytes = std::vector<std::uint8_t>;

  Bytes Ask(LineRequest kind, Bytes rest = {}) const {
    rest.insert(rest.begin(), kind);
    return SendBlock(socket_, rest) ? ReceiveBlock(socket_).value_or(Bytes{}) : Bytes{};
  }

  platform::SocketHandle socket_ = platform::kInvalidSocket;
  std::string name_;
  bool pulled_ = false;
};

}  // namespace quarn::test
