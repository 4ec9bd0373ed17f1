#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quarn::platform {

/// A serial line without hardware: a client opens `name()` as its serial port; this object is the far end.
/// Implemented by pseudo_terminal_posix.cpp and pseudo_terminal_windows.cpp. No operation throws;
/// thread-safe.
///
/// The line exists from Create to Pull, whether a client has it open or not; up to a few kilobytes of unread
/// bytes are buffered. It has a baud rate like any port, but bytes arrive immediately.
class PseudoTerminal {
 public:
  /// Null if the system has no pseudo-terminals (Windows) or none left.
  static std::unique_ptr<PseudoTerminal> Create();
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// The port's name for the client; still valid after Pull.
  const std::string& name() const { return name_; }

  /// Waits for bytes from the client: 1 if there are some, 0 on time-out, -1 if the line was pulled. A
  /// negative time waits forever.
  int WaitReadable(std::int64_t timeout_us);

  /// Reads without waiting: the number of bytes, 0 if there are none, -1 if the line was pulled.
  int Read(std::span<std::uint8_t> buffer);

  /// True if all bytes were sent within the time.
  bool Write(std::span<const std::uint8_t> bytes, std::int64_t timeout_us);

  /// The rate that the client set; 0 once the line was pulled.
  std::uint32_t BaudRate();

  /// Unplugs the line for good: the client's reads and writes fail, and waits on this object return at once.
  void Pull();

 private:
  struct Native;
  explicit PseudoTerminal(std::unique_ptr<Native> native, std::string name);

  const std::unique_ptr<Native> native_;
  const std::string name_;
};

}  // namespace quarn::platform
