#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace quarn::lidar {

/// Tells replies and the point-cloud data around them apart on one line, whatever pieces they come in. A
/// reply begins with its tag and is as long as its length byte says; its CRC is left to the reader. A reply
/// whose tag arrived garbled is recognised at its end, by everything else that CheckReply looks at.
class SerialStreamSplitter {
 public:
  struct Sinks {
    /// A piece of a reply as soon as it comes; `begins` is true for the first piece of each. A reply with a
    /// garbled tag comes whole.
    std::function<void(std::span<const std::uint8_t> piece, bool begins)> reply;
    /// Everything else, at once, and so also the bytes of a reply with a garbled tag.
    std::function<void(std::span<const std::uint8_t> piece)> data;
  };

  explicit SerialStreamSplitter(Sinks sinks) : sinks_(std::move(sinks)) {}

  void Add(std::span<const std::uint8_t> bytes);
  /// Forgets a reply or a tag that is under way.
  void Reset();

 private:
  std::span<const std::uint8_t> PassReply(std::span<const std::uint8_t> bytes);
  std::span<const std::uint8_t> PassData(std::span<const std::uint8_t> bytes);
  void PassUntaggedReplies(std::span<const std::uint8_t> data);

  const Sinks sinks_;
  std::vector<std::uint8_t> joined_;  ///< what may be the beginning of a tag, then the bytes after it
  std::vector<std::uint8_t> recent_;  ///< the last data bytes, which may be an untagged reply's beginning
  std::size_t reply_left_ = 0;        ///< bytes of the reply under way that are known to come
  bool reply_begins_ = false;
  bool length_due_ = false;  ///< the last of them is the length byte
};

}  // namespace quarn::lidar
