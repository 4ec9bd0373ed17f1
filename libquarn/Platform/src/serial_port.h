#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quarn::platform {

/// The line's time-outs: a read ends when nothing more has come for the interval, or after its total; a write
/// may take its total plus the time per byte.
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
/// parity, one stop bit, no flow control, raw bytes, opened exclusively. No operation throws.
///
/// One thread may read while another writes; Interrupt may come from any thread.
class SerialPort {
 public:
  /// Null if the port can't be opened or rejects its settings. `baud_rate` may be any rate that the hardware
  /// supports; the open fails if the hardware would use a different one.
  static std::unique_ptr<SerialPort> Open(const std::string& name, std::uint32_t baud_rate);
  ~SerialPort();
  SerialPort(const SerialPort&) = delete;
  SerialPort& operator=(const SerialPort&) = delete;

  /// Waits for input: 1 if there is some, 0 on time-out, -1 if the line is gone or interrupted. A negative
  /// time waits forever.
  int WaitReadable(std::int64_t timeout_us);

  /// Reads what comes within the read time-outs: the number of bytes, 0 if none came, -1 if the line is gone
  /// or interrupted.
  int Read(std::span<std::uint8_t> buffer);

  /// The number of bytes sent within the write time-out (fewer if it ran out), or -1.
  int Write(std::span<const std::uint8_t> bytes);

  /// Discards unread input.
  void ClearInput();

  /// Makes the port unusable for good: a wait returns at once. The port is closed by the destructor.
  void Interrupt();

  /// False once the line broke or was interrupted.
  bool is_usable() const { return usable_; }

  /// The port's rate according to the system; 0 if unknown.
  std::uint32_t BaudRate() const;

 private:
  struct Native;
  explicit SerialPort(std::unique_ptr<Native> native);
  int Fail();

  const std::unique_ptr<Native> native_;
  std::atomic<bool> usable_{true};
};

}  // namespace quarn::platform
