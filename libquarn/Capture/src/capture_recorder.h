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

/// Where a sensor on serial lines stands in a capture, and the tool in every one: addresses that no network
/// has (RFC 5737), and the port after KTC's.
inline constexpr TcpEndpoint kSerialLinesEndpoint = {{192, 0, 2, 2}, 9348};
inline constexpr Ipv4 kToolAddress = {192, 0, 2, 1};

/// Writes what goes over the wire to a pcap file, each connection as a TCP conversation of its own: a
/// handshake, the bytes in segments, an end. Packets are flushed one by one, so that the file is readable
/// whatever becomes of the program. A recording ends by itself at its largest size or when the file can't be
/// written. Thread-safe; costs an exchange nothing but a look at a flag while it is off.
class CaptureRecorder {
 public:
  static constexpr std::uint64_t kLargestFile = 1'000'000'000;

  /// `ended` gets a sentence when a recording ends by itself, once, on the thread of the exchange that it
  /// meets; it must not throw or call the recorder, except `is_recording`.
  explicit CaptureRecorder(std::function<void(const std::string&)> ended,
                           std::uint64_t largest_file = kLargestFile);
  CaptureRecorder(const CaptureRecorder&) = delete;
  CaptureRecorder& operator=(const CaptureRecorder&) = delete;

  /// Begins a new file in place of one of that name; a running recording ends first. Empty, or a sentence.
  std::string Start(const std::filesystem::path& file);
  void Stop();
  bool is_recording() const { return is_recording_; }

  /// A tap for a new connection to `sensor`. It may be made before, during and after a recording and shows in
  /// all that run while it lives. The recorder outlives it.
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
