#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {

/// Assembles one reply from the pieces in which a line delivers it, with or without noise before its tag.
/// Buffers at most `kMaxReplyBlock` bytes besides the piece being added.
class ReplyAssembler {
 public:
  enum class State : std::uint8_t {
    kIncomplete,  ///< more input is needed
    kPassed,      ///< block() is a reply that CheckReply accepts
    kFailed,      ///< the reply is complete but invalid
  };

  explicit ReplyAssembler(ReplyKind kind) : kind_(kind) {}

  State Add(std::span<const std::uint8_t> piece);

  /// No more input will arrive: the result is final, kPassed or kFailed.
  State Finish();

  /// The reply, or the part of it received so far: from its tag on, or everything if there was no tag.
  std::span<const std::uint8_t> block() const { return block_; }

 private:
  State Judge();
  std::size_t FindTag(std::size_t from) const;
  bool EndsWithinTag() const;
  void DropFront(std::size_t count);

  const ReplyKind kind_;
  std::vector<std::uint8_t> block_;
  State state_ = State::kIncomplete;
};

}  // namespace quarn::lidar
