#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <utility>

#include "libquarn/Capture/src/pcap_format.h"
#include "libquarn/Capture/src/tcp_packet.h"
#include "libquarn/Platform/src/wire_tap.h"

namespace quarn::lidar {

/// Reassembles the byte streams of each connection with a sensor from the segments of a capture. Segments are
/// taken in file order: retransmitted bytes are dropped, and missing bytes are not waited for.
class TcpConversations {
 public:
  /// A connection; numbered from 1 in the order in which they begin.
  struct Connection {
    std::size_t number = 0;
    TcpEndpoint sensor;
  };
  struct Events {
    std::function<void(const Connection&, WireDirection, CaptureTime, std::span<const std::uint8_t>)> bytes;
    /// This many bytes in that direction are missing from the file.
    std::function<void(const Connection&, WireDirection, std::uint64_t)> lost;
    std::function<void(const Connection&)> ended;
  };

  explicit TcpConversations(Events events) : events_(std::move(events)) {}

  void Add(const TcpSegment& segment, CaptureTime time);
  /// Ends every connection that is still open.
  void Finish();

 private:
  struct Stream {
    std::optional<std::uint32_t> next;  // sequence number
    bool finished = false;
  };
  struct Conversation {
    Connection connection;
    std::array<Stream, 2> streams;  // by WireDirection
  };
  using Key = std::pair<TcpEndpoint, TcpEndpoint>;  // tool, sensor

  std::map<Key, Conversation>::iterator Find(const TcpSegment& segment);
  void Take(Conversation& conversation, WireDirection direction, const TcpSegment& segment, CaptureTime time);

  const Events events_;
  std::map<Key, Conversation> open_;
  std::size_t count_ = 0;
};

}  // namespace quarn::lidar
