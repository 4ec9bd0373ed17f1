#include "libquarn/Source/src/reply_assembler.h"

#include <algorithm>
#include <string_view>

namespace quarn::lidar {

ReplyAssembler::State ReplyAssembler::Add(std::span<const std::uint8_t> piece) {
  if (state_ == State::kIncomplete) {
    block_.insert(block_.end(), piece.begin(), piece.end());
    state_ = Judge();
  }
  return state_;
}

ReplyAssembler::State ReplyAssembler::Finish() {
  if (state_ == State::kIncomplete) {
    state_ = State::kFailed;  // whatever passes was seen when its last byte was added
  }
  return state_;
}

ReplyAssembler::State ReplyAssembler::Judge() {
  // Everything as one block first: a reply counts by its checks, even when its tag arrived garbled.
  if (CheckReply(kind_, block_)) {
    return State::kPassed;
  }
  bool wrong_reply = false;
  for (std::size_t tag = FindTag(0); tag < block_.size(); tag = FindTag(1)) {
    DropFront(tag);
    if (block_.size() <= kSerialTagSize) {
      return State::kIncomplete;
    }
    const std::size_t size = ReplySize(block_[kSerialTagSize]);
    if (block_.size() < size) {
      return State::kIncomplete;
    }
    if (CheckReply(kind_, std::span(block_).first(size))) {
      block_.resize(size);
      return State::kPassed;
    }
    wrong_reply = true;  // unless it was the stump of an older one, with the true reply behind it
  }
  if (wrong_reply) {
    return EndsWithinTag() ? State::kIncomplete : State::kFailed;
  }
  if (block_.size() > kMaxReplyBlock) {
    DropFront(block_.size() - kMaxReplyBlock);
  }
  return State::kIncomplete;
}

// The tag's place, or the block's size. A tag that is cut off by the block's end is found with the next
// piece.
std::size_t ReplyAssembler::FindTag(std::size_t from) const {
  const std::string_view tag = SerialTag(kind_);
  const auto begin = block_.begin() + static_cast<std::ptrdiff_t>(std::min(from, block_.size()));
  return static_cast<std::size_t>(std::search(begin, block_.end(), tag.begin(), tag.end()) - block_.begin());
}

bool ReplyAssembler::EndsWithinTag() const {
  const std::string_view tag = SerialTag(kind_);
  const std::string_view text(reinterpret_cast<const char*>(block_.data()), block_.size());
  for (std::size_t size = 1; size < tag.size(); ++size) {
    if (text.ends_with(tag.substr(0, size))) {
      return true;
    }
  }
  return false;
}

void ReplyAssembler::DropFront(std::size_t count) {
  block_.erase(block_.begin(), block_.begin() + static_cast<std::ptrdiff_t>(count));
}

}  // namespace quarn::lidar
