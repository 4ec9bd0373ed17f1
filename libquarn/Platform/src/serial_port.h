#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quarn::platform {

/// The line's time-outs: a read ends when nothing more came for the interval, or at its total; a write may
/// take its total and the time of its bytes.
inline constexpr int kSerialReadIntervalMs = 1;
inline constexpr int kSerialReadTotalMs = 1;
inline constexpr int kSerialWritePerByteMs = 1;
inline constexpr int kSerialWriteTotalMs = 50;

/// The name under which Windows opens a port: "COM12" is only found below the device prefix, and names of up
/// to four characters ("COM3") are taken as they are.
inline std::string WindowsDeviceName(const std::string& port) {
  constexpr std::size_t kPlainName = 4;
  return port.size() > kPlainName ? "\\\\.\\" + port : port;
}

/// An open serial port on either system (serial_port_posix.cpp, serial_port_windows.cpp): 8 data bits, no
/// parity, one stop bit, no flow control, raw bytes, nobody else may open it. No operation throws.
///
/// One thread may read while another writes; Interrupt may come from any thread.
class SerialPort {
 public:
  /// Null when the port can't be opened or refuses its settings. `baud_rate` is any rate that the hardware
  /// does; one that it brings to something else is refused.
  static std::unique_ptr<SerialPort> Open(const std::string& name, std::uint32_t baud_rate);
  ~SerialPort();
  SerialPort(const SerialPort&) = delete;
  SerialPort& operator=(const SerialPort&) = delete;

  /// Waits for input: 1 when some is there, 0 when the time ran out, -1 when the line is gone or interrupted.
  /// A negative time waits without end.
  int WaitReadable(std::int64_t timeout_us);

  /// What comes within the read's time-outs: bytes, 0 when none came, -1 when the line is gone or
  /// interrupted.
  int Read(std::span<std::uint8_t> buffer);

  /// The bytes that went out within the write's time-out (fewer when it ran out), or -1.
  int Write(std::span<const std::uint8_t> bytes);

  /// Drops what has arrived and was not read.
  void ClearInput();

  /// Ends the port's use for good: a wait returns at once. The port closes when it is destroyed.
  void Interrupt();

  /// False from the moment at which the line broke or was interrupted.
  bool is_usable() const { return usable_; }

  /// The rate that the system says the port has; 0 when it can't say.
  std::uint32_t BaudRate() const;

 private:
  struct Native;
  explicit SerialPort(std::unique_ptr<Native> native);
  int Fail();

  const std::unique_ptr<Native> native_;
  std::atomic<bool> usable_{true};
};

}  // namespace quarn::platform
