#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "libquarn/Source/src/serial_frame.h"

namespace quarn::lidar {

/// Assembles one reply from whatever pieces a line delivers it in, with noise before its tag or not.
/// Holds at most one block of `kMaxReplyBlock` bytes besides the piece that is added.
class ReplyAssembler {
 public:
  enum class State : std::uint8_t {
    kIncomplete,  ///< more has to come
    kPassed,      ///< block() is a reply that CheckReply accepts
    kFailed,      ///< a reply came whole and is wrong
  };

  explicit ReplyAssembler(ReplyKind kind) : kind_(kind) {}

  State Add(std::span<const std::uint8_t> piece);

  /// No more will come. What is there is judged as it is: kPassed or kFailed.
  State Finish();

  /// The reply, or what there is of it: from its tag on, or everything when no tag came.
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
