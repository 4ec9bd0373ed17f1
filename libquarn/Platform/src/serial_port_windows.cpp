#include <windows.h>

#include "libquarn/Platform/src/serial_port.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace quarn::platform {
namespace {

using Clock = std::chrono::steady_clock;

// Without overlapped I/O a port can't be waited on together with another handle, so its input is polled at
// this interval, the line's own read time-out.
constexpr DWORD kLookMs = 1;

DWORD ClampToDword(std::size_t size) {
  return static_cast<DWORD>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
}

bool Configure(HANDLE port, std::uint32_t baud_rate) {
  DCB line{};
  line.DCBlength = sizeof(line);
  if (baud_rate == 0 || !GetCommState(port, &line)) {
    return false;
  }
  line = DCB{};
  line.DCBlength = sizeof(line);
  line.fBinary = TRUE;
  line.BaudRate = baud_rate;
  line.ByteSize = 8;
  line.Parity = NOPARITY;
  line.StopBits = ONESTOPBIT;
  COMMTIMEOUTS timeouts{};
  timeouts.ReadIntervalTimeout = kSerialReadIntervalMs;
  timeouts.ReadTotalTimeoutMultiplier = 0;
  timeouts.ReadTotalTimeoutConstant = kSerialReadTotalMs;
  timeouts.WriteTotalTimeoutMultiplier = kSerialWritePerByteMs;
  timeouts.WriteTotalTimeoutConstant = kSerialWriteTotalMs;
  return SetCommState(port, &line) && SetCommTimeouts(port, &timeouts) &&
         PurgeComm(port, PURGE_RXCLEAR | PURGE_TXCLEAR);
}

}  // namespace

struct SerialPort::Native {
  Native(HANDLE port_in, HANDLE wake_in) : port(port_in), wake(wake_in) {}
  ~Native() {
    if (port != INVALID_HANDLE_VALUE) {
      CloseHandle(port);
    }
    if (wake != nullptr) {
      CloseHandle(wake);
    }
  }
  Native(const Native&) = delete;
  Native& operator=(const Native&) = delete;

  const HANDLE port;
  const HANDLE wake;  // set once interrupted
};

std::unique_ptr<SerialPort> SerialPort::Open(const std::string& name, std::uint32_t baud_rate) {
  auto native =
      std::make_unique<Native>(CreateFileA(WindowsDeviceName(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                           nullptr, OPEN_EXISTING, 0, nullptr),
                               CreateEventA(nullptr, TRUE, FALSE, nullptr));
  if (native->port == INVALID_HANDLE_VALUE || native->wake == nullptr ||
      !Configure(native->port, baud_rate)) {
    return nullptr;
  }
  return std::unique_ptr<SerialPort>(new SerialPort(std::move(native)));
}

SerialPort::SerialPort(std::unique_ptr<Native> native) : native_(std::move(native)) {}

SerialPort::~SerialPort() = default;

int SerialPort::WaitReadable(std::int64_t timeout_us) {
  const auto start = Clock::now();
  while (usable_) {
    COMSTAT status{};
    DWORD errors = 0;
    if (!ClearCommError(native_->port, &errors, &status)) {
      return Fail();
    }
    if (status.cbInQue > 0) {
      return 1;
    }
    if (timeout_us >= 0 && Clock::now() - start >= std::chrono::microseconds(timeout_us)) {
      return 0;
    }
    WaitForSingleObject(native_->wake, kLookMs);
  }
  return -1;
}

int SerialPort::Read(std::span<std::uint8_t> buffer) {
  DWORD received = 0;
  if (!usable_ || !ReadFile(native_->port, buffer.data(), ClampToDword(buffer.size()), &received, nullptr)) {
    return Fail();
  }
  return static_cast<int>(received);
}

int SerialPort::Write(std::span<const std::uint8_t> bytes) {
  DWORD written = 0;
  if (!usable_ || !WriteFile(native_->port, bytes.data(), ClampToDword(bytes.size()), &written, nullptr)) {
    return Fail();
  }
  return static_cast<int>(written);
}

void SerialPort::ClearInput() {
  PurgeComm(native_->port, PURGE_RXCLEAR);
}

void SerialPort::Interrupt() {
  usable_ = false;
  SetEvent(native_->wake);
}

std::uint32_t SerialPort::BaudRate() const {
  DCB line{};
  line.DCBlength = sizeof(line);
  return GetCommState(native_->port, &line) ? line.BaudRate : 0;
}

int SerialPort::Fail() {
  usable_ = false;
  return -1;
}

}  // namespace quarn::platform
