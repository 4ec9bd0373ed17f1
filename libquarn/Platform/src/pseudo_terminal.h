#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace quarn::platform {

/// A serial line without hardware: a client opens `name()` as its serial port, this is the far end.
/// Implemented by pseudo_terminal_posix.cpp and pseudo_terminal_windows.cpp. No operation throws, and all may
/// be called from any thread.
///
/// The line exists from Create to Pull, whether a client has it open or not; bytes that nobody reads pile up
/// to a few kilobytes. It has a baud rate like any port, but bytes travel at once.
class PseudoTerminal {
 public:
  /// Null where the system has none (Windows) or gives out no more.
  static std::unique_ptr<PseudoTerminal> Create();
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// The port's name for the client; stays after Pull.
  const std::string& name() const { return name_; }

  /// Waits for the client's bytes: 1 when some are there, 0 when the time ran out, -1 when the line was
  /// pulled. A negative time waits without end.
  int WaitReadable(std::int64_t timeout_us);

  /// What is there: bytes, 0 when there are none, -1 when the line was pulled.
  int Read(std::span<std::uint8_t> buffer);

  /// True when all bytes went out within the time.
  bool Write(std::span<const std::uint8_t> bytes, std::int64_t timeout_us);

  /// The rate that the client put the line to; 0 once it was pulled.
  std::uint32_t BaudRate();

  /// The line is pulled out, for good: the client's reads and writes fail, a wait here returns at
  /// once.
  void Pull();

 private:
  struct Native;
  explicit PseudoTerminal(std::unique_ptr<Native> native, std::string name);

  const std::unique_ptr<Native> native_;
  const std::string name_;
};

}  // namespace quarn::platform
