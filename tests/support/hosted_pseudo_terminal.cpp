// Serial lines for tests where the system has no pseudo-terminals: in the place of
// pseudo_terminal_windows.cpp, which the linker leaves out when a test program brings this file. VARKEL_LINES
// names the ports whose far ends socat holds beside the tests, and the TCP ports that lead there: "COM3:20003
// COM4:20004". Each TCP port takes one connection at a time; the line lasts as long as that.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <sstream>
#include <thread>

#include "libquarn/Platform/src/pseudo_terminal.h"
#include "libquarn/Platform/src/socket.h"

namespace quarn::platform {

struct PseudoTerminal::Native {
  Native() { StartUpSockets(); }
  ~Native() {
    CloseSocket(socket);
    CleanUpSockets();
  }
  Native(const Native&) = delete;
  Native& operator=(const Native&) = delete;

  bool Connect(const std::string& port) {
    CloseSocket(socket);
    socket = CreateTcpSocket();
    SetReceiveBufferSize(socket, 4096);  // a line holds little that nobody reads
    return ConnectSocket(socket, "127.0.0.1", static_cast<std::uint16_t>(std::stoi(port))) == 0;
  }

  SocketHandle socket = kInvalidSocket;
  std::atomic<bool> pulled{false};
};

std::unique_ptr<PseudoTerminal> PseudoTerminal::Create() {
  const char* const lines = std::getenv("VARKEL_LINES");
  auto native = std::make_unique<Native>();
  // All may be taken, or between two connections.
  for (int attempt = 0; attempt < 200 && lines != nullptr; ++attempt) {
    std::istringstream words(lines);
    for (std::string line; words >> line;) {
      const std::size_t colon = line.find(':');
      if (!native->Connect(line.substr(colon + 1))) continue;
      return std::unique_ptr<PseudoTerminal>(new PseudoTerminal(std::move(native), line.substr(0, colon)));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return nullptr;
}

PseudoTerminal::PseudoTerminal(std::unique_ptr<Native> native, std::string name)
    : native_(std::move(native)), name_(std::move(name)) {}

PseudoTerminal::~PseudoTerminal() = default;

int PseudoTerminal::WaitReadable(std::int64_t timeout_us) {
  const int wait_ms = static_cast<int>(timeout_us < 0 ? -1 : timeout_us / 1000);
  const int ready = platform::WaitReadable(native_->socket, wait_ms);
  return native_->pulled ? -1 : ready;
}

int PseudoTerminal::Read(std::span<std::uint8_t> buffer) {
  if (platform::WaitReadable(native_->socket, 0) == 0) return 0;
  const int count = ReceiveBytes(native_->socket, buffer, 0);
  return native_->pulled || count <= 0 ? -1 : count;
}

bool PseudoTerminal::Write(std::span<const std::uint8_t> bytes, std::int64_t timeout_us) {
  SetSocketSendTimeout(native_->socket, static_cast<std::uint32_t>(timeout_us / 1000));
  return SendBytes(native_->socket, bytes, 0) == static_cast<int>(bytes.size());
}

std::uint32_t PseudoTerminal::BaudRate() {
  return 0;  // stays on the other side
}

void PseudoTerminal::Pull() {
  if (!native_->pulled.exchange(true)) ShutdownSocket(native_->socket);
}

}  // namespace quarn::platform
