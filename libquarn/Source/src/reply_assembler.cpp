#include "libquarn/Source/src/reply_assembler.h"

#include <algorithm>
#include <string_view>

namespace quarn::lidar {

ReplyAssembler::State ReplyAssembler::Add(std::span<const std::uint8_t> piece) {
  if (state_ == State::kIncomplete) {
    // The checks alone decide, so a reply with a garbled tag is accepted.
    if (CheckReply(kind_, piece)) {
      block_.assign(piece.begin(), piece.end());
      return state_ = State::kPassed;
    }
    block_.insert(block_.end(), piece.begin(), piece.end());
    state_ = Judge();
  }
  return state_;
}

ReplyAssembler::State ReplyAssembler::Finish() {
  if (state_ == State::kIncomplete) {
    state_ = State::kFailed;  // a valid reply was recognised when its last byte was added
  }
  return state_;
}

ReplyAssembler::State ReplyAssembler::Judge() {
  // Everything as one block first: a reply with a garbled tag may arrive in pieces.
  if (CheckReply(kind_, block_)) {
    return State::kPassed;
  }
  // A truncated older reply may precede the real one and claim its bytes, so every tag is tried.
  DropFront(FindTag(0) < block_.size() ? FindTag(0) : 0);
  bool wrong = false;
  bool incomplete = EndsWithinTag();
  for (std::size_t tag = FindTag(0); tag < block_.size(); tag = FindTag(tag + 1)) {
    const std::span<const std::uint8_t> rest = std::span(block_).subspan(tag);
    if (rest.size() <= kSerialTagSize || rest.size() < ReplySize(rest[kSerialTagSize])) {
      incomplete = true;
    } else if (const auto reply = rest.first(ReplySize(rest[kSerialTagSize])); CheckReply(kind_, reply)) {
      const std::size_t size = reply.size();
      DropFront(tag);
      block_.resize(size);
      return State::kPassed;
    } else {
      wrong = true;
    }
  }
  if (wrong && !incomplete) {
    return State::kFailed;
  }
  if (block_.size() > kMaxReplyBlock) {
    DropFront(block_.size() - kMaxReplyBlock);
  }
  return State::kIncomplete;
}

// The tag's offset, or the block's size. A tag that the block's end cuts off is found with the next piece.
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
