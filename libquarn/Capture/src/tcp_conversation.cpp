#include "libquarn/Capture/src/tcp_conversation.h"

#include "libquarn/Capture/src/capture_recorder.h"

namespace quarn::lidar {
namespace {

/// Limits the memory for a file that only opens connections.
constexpr std::size_t kMaxOpen = 1024;
constexpr std::uint16_t kKtcPort = 9347;

bool IsSensorPort(std::uint16_t port) {
  return port == kKtcPort || port == kSerialLinesEndpoint.port;
}

/// Whether the segment, the first of its connection, goes to the sensor: the tool opens connections and sends
/// first.
bool GoesToSensor(const TcpSegment& segment) {
  if ((segment.flags & kTcpSyn) != 0) return (segment.flags & kTcpAck) == 0;
  if (IsSensorPort(segment.destination.port) != IsSensorPort(segment.source.port)) {
    return IsSensorPort(segment.destination.port);
  }
  return true;
}

}  // namespace

void TcpConversations::Add(const TcpSegment& segment, CaptureTime time) {
  const auto place = Find(segment);
  if (place == open_.end()) return;
  Conversation& conversation = place->second;
  const bool to_sensor = segment.destination == conversation.connection.sensor;
  const auto direction = to_sensor ? WireDirection::kToSensor : WireDirection::kFromSensor;
  Stream& stream = conversation.streams[static_cast<std::size_t>(direction)];
  if ((segment.flags & kTcpSyn) != 0) stream.next = segment.sequence + 1;
  Take(conversation, direction, segment, time);
  if ((segment.flags & kTcpFin) != 0) stream.finished = true;
  if ((segment.flags & kTcpRst) == 0 &&
      !(conversation.streams[0].finished && conversation.streams[1].finished)) {
    return;
  }
  events_.ended(conversation.connection);
  open_.erase(place);
}

/// The segment's conversation, created if the segment begins one; otherwise the end iterator.
std::map<TcpConversations::Key, TcpConversations::Conversation>::iterator TcpConversations::Find(
    const TcpSegment& segment) {
  const bool begins = (segment.flags & (kTcpSyn | kTcpAck)) == kTcpSyn;
  for (const Key& key :
       {Key(segment.source, segment.destination), Key(segment.destination, segment.source)}) {
    const auto found = open_.find(key);
    if (found == open_.end()) continue;
    if (!begins || found->second.streams[0].next == segment.sequence + 1) return found;
    events_.ended(found->second.connection);  // the ports are being reused
    open_.erase(found);
    break;
  }
  if ((!begins && segment.payload.empty() && (segment.flags & kTcpSyn) == 0) || open_.size() >= kMaxOpen) {
    return open_.end();
  }
  const bool to_sensor = GoesToSensor(segment);
  const TcpEndpoint& sensor = to_sensor ? segment.destination : segment.source;
  const TcpEndpoint& tool = to_sensor ? segment.source : segment.destination;
  return open_.emplace(Key(tool, sensor), Conversation{{++count_, sensor}, {}}).first;
}

void TcpConversations::Take(Conversation& conversation, WireDirection direction, const TcpSegment& segment,
                            CaptureTime time) {
  std::span<const std::uint8_t> bytes = segment.payload;
  if (bytes.empty()) return;
  auto& next = conversation.streams[static_cast<std::size_t>(direction)].next;
  if (!next) next = segment.sequence;
  // Sequence numbers wrap: a distance of less than half their range means that the bytes are already known.
  const std::uint32_t known = *next - segment.sequence;
  if (known != 0 && known <= 0x7FFFFFFFU) {
    if (known >= bytes.size()) return;
    bytes = bytes.subspan(known);
  } else if (known != 0) {
    events_.lost(conversation.connection, direction, segment.sequence - *next);
    next = segment.sequence;
  }
  *next += static_cast<std::uint32_t>(bytes.size());
  events_.bytes(conversation.connection, direction, time, bytes);
}

void TcpConversations::Finish() {
  for (const auto& [key, conversation] : open_) events_.ended(conversation.connection);
  open_.clear();
}

}  // namespace quarn::lidar
