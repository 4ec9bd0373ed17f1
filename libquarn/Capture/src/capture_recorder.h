#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>

#include "libquarn/Capture/src/tcp_packet.h"
#include "libquarn/Platform/src/wire_tap.h"

namespace quarn::lidar {

/// Stand-in addresses in a capture, for a sensor on serial lines and for the tool: addresses reserved for
/// documentation (RFC 5737), and the port after KTC's.
inline constexpr TcpEndpoint kSerialLinesEndpoint = {{192, 0, 2, 2}, 9348};
inline constexpr Ipv4 kToolAddress = {192, 0, 2, 1};

/// Writes the traffic to a pcap file, each connection as its own TCP conversation with handshake, data
/// segments and close. Every packet is flushed, so that the file is readable even if the program crashes. A
/// recording ends by itself at its maximum size or if the file can't be written. Thread-safe; while off, it
/// costs an exchange only the check of a flag.
class CaptureRecorder {
 public:
  static constexpr std::uint64_t kLargestFile = 1'000'000'000;

  /// `ended` is called once, with a sentence, when a recording ends by itself, on the thread of the exchange
  /// being recorded. It must not throw, and may call only `is_recording`.
  explicit CaptureRecorder(std::function<void(const std::string&)> ended,
                           std::uint64_t largest_file = kLargestFile);
  CaptureRecorder(const CaptureRecorder&) = delete;
  CaptureRecorder& operator=(const CaptureRecorder&) = delete;

  /// Starts a new file, replacing any file of that name; ends a running recording first. Returns an empty
  /// text, or a sentence saying why it failed.
  std::string Start(const std::filesystem::path& file);
  void Stop();
  bool is_recording() const { return is_recording_; }

  /// A tap for a new connection to `sensor`. It may be created at any time and appears in every recording
  /// made during its lifetime. The recorder outlives it.
  std::shared_ptr<WireTap> Connection(const TcpEndpoint& sensor);

 private:
  class Tap;

  // With mutex_ held.
  void WritePacket(const TcpSegment& segment);
  void End(const std::string& reason) noexcept;

  const std::function<void(const std::string&)> ended_;
  const std::uint64_t largest_file_;
  std::atomic<bool> is_recording_ = false;

  std::mutex mutex_;  // guards what follows, and the taps
  std::filesystem::path path_;
  std::ofstream file_;
  std::uint64_t size_ = 0;
  std::uint64_t recording_ = 0;    // number of the recording
  std::uint16_t connections_ = 0;  // of all recordings
  std::uint16_t identification_ = 0;
};

}  // namespace quarn::lidar
