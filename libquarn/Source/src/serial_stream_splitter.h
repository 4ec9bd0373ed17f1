#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace quarn::lidar {

/// Separates replies from the point-cloud data around them on one line, however the input is split. A reply
/// begins with its tag, and its length byte gives its size; checking its CRC is left to the reader. A reply
/// with a garbled tag is recognised at its end, by everything else that CheckReply examines.
class SerialStreamSplitter {
 public:
  struct Sinks {
    /// A piece of a reply, passed on without delay; `begins` is true for the first piece of each. A reply
    /// with a garbled tag is passed on complete.
    std::function<void(std::span<const std::uint8_t> piece, bool begins)> reply;
    /// All other bytes, without delay, and therefore also those of a reply with a garbled tag.
    std::function<void(std::span<const std::uint8_t> piece)> data;
  };

  explicit SerialStreamSplitter(Sinks sinks) : sinks_(std::move(sinks)) {}

  void Add(std::span<const std::uint8_t> bytes);
  /// Forgets a partly received reply or tag.
  void Reset();

 private:
  std::span<const std::uint8_t> PassReply(std::span<const std::uint8_t> bytes);
  std::span<const std::uint8_t> PassData(std::span<const std::uint8_t> bytes);
  void PassUntaggedReplies(std::span<const std::uint8_t> data);

  const Sinks sinks_;
  std::vector<std::uint8_t> joined_;  ///< a possible start of a tag, then the bytes after it
  std::vector<std::uint8_t> recent_;  ///< the last data bytes: the possible start of an untagged reply
  std::size_t reply_left_ = 0;        ///< bytes of the current reply still to come, as far as known
  bool reply_begins_ = false;
  bool length_due_ = false;  ///< the last of these is the length byte
};

}  // namespace quarn::lidar
