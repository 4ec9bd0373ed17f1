#include "libquarn/Source/src/serial_stream_splitter.h"

#include <algorithm>
#include <string_view>

#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {
namespace {

constexpr std::size_t kThroughLength = kSerialTagSize + 1;

std::string_view AsText(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::size_t FindTag(std::span<const std::uint8_t> bytes) {
  const std::string_view text = AsText(bytes);
  const std::size_t found =
      std::min(text.find(SerialTag(ReplyKind::kCommand)), text.find(SerialTag(ReplyKind::kOta)));
  return std::min(found, bytes.size());
}

// How many of the last bytes may be the start of a tag.
std::size_t UnfinishedTag(std::span<const std::uint8_t> bytes) {
  const std::string_view text = AsText(bytes);
  for (std::size_t size = std::min(kSerialTagSize - 1, text.size()); size > 0; --size) {
    const std::string_view end = text.substr(text.size() - size);
    if (SerialTag(ReplyKind::kCommand).starts_with(end) || SerialTag(ReplyKind::kOta).starts_with(end)) {
      return size;
    }
  }
  return 0;
}

// The reply that ends at the last byte, or empty: its length byte, trailer and CRC must match.
std::span<const std::uint8_t> UntaggedReplyAtEnd(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kMinReplySize || !EndsInTrailer(bytes)) {
    return {};
  }
  const std::size_t longest = std::min(bytes.size(), kMaxReplySize);
  for (std::size_t size = kMinReplySize; size <= longest; ++size) {
    const std::span<const std::uint8_t> reply = bytes.last(size);
    if (ReplySize(reply[kSerialTagSize]) == size &&
        (CheckReply(ReplyKind::kCommand, reply) || CheckReply(ReplyKind::kOta, reply))) {
      return reply;
    }
  }
  return {};
}

}  // namespace

void SerialStreamSplitter::Add(std::span<const std::uint8_t> bytes) {
  joined_.insert(joined_.end(), bytes.begin(), bytes.end());
  std::span<const std::uint8_t> rest = joined_;
  bool more = true;
  while (more && !rest.empty()) {
    const std::size_t before = rest.size();
    rest = reply_left_ > 0 ? PassReply(rest) : PassData(rest);
    more = rest.size() < before || reply_left_ > 0;
  }
  joined_.erase(joined_.begin(), joined_.end() - static_cast<std::ptrdiff_t>(rest.size()));
}

void SerialStreamSplitter::Reset() {
  joined_.clear();
  recent_.clear();
  reply_left_ = 0;
  length_due_ = false;
}

std::span<const std::uint8_t> SerialStreamSplitter::PassReply(std::span<const std::uint8_t> bytes) {
  const std::span<const std::uint8_t> piece = bytes.first(std::min(bytes.size(), reply_left_));
  sinks_.reply(piece, reply_begins_);
  reply_begins_ = false;
  reply_left_ -= piece.size();
  if (reply_left_ == 0 && length_due_) {
    length_due_ = false;
    reply_left_ = ReplySize(piece.back()) - kThroughLength;
  }
  return bytes.subspan(piece.size());
}

std::span<const std::uint8_t> SerialStreamSplitter::PassData(std::span<const std::uint8_t> bytes) {
  const std::size_t tag = FindTag(bytes);
  const bool found = tag < bytes.size();
  const std::size_t size = found ? tag : bytes.size() - UnfinishedTag(bytes);
  if (size > 0) {
    sinks_.data(bytes.first(size));
    PassUntaggedReplies(bytes.first(size));
  }
  if (found) {
    recent_.clear();
    reply_left_ = kThroughLength;
    reply_begins_ = true;
    length_due_ = true;
  }
  return bytes.subspan(size);
}

void SerialStreamSplitter::PassUntaggedReplies(std::span<const std::uint8_t> data) {
  const std::size_t seen = recent_.size();
  recent_.insert(recent_.end(), data.begin(), data.end());
  std::size_t begin = 0;  // of the bytes that belong to no reply so far
  for (std::size_t end = std::max(seen + 1, kMinReplySize); end <= recent_.size(); ++end) {
    const auto reply = UntaggedReplyAtEnd(std::span(recent_).subspan(begin, end - begin));
    if (!reply.empty()) {
      sinks_.reply(reply, true);
      begin = end;
    }
  }
  const std::size_t kept = std::min(recent_.size() - begin, kMaxReplySize - 1);
  recent_.erase(recent_.begin(), recent_.end() - static_cast<std::ptrdiff_t>(kept));
}

}  // namespace quarn::lidar
