#include "libquarn/Capture/src/ktc_frame_splitter.h"

#include <array>

#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/byte_order.h"

namespace quarn::lidar {
namespace {

const GeneralKtcParser& ParserOf(std::uint8_t version) {
  static const Ktc_1_0_parser kVersion1;
  static const Ktc_2_0_parser kVersion2;
  if (version == 2) return kVersion2;
  return kVersion1;
}

/// The version whose identifier the bytes begin with; 0: none, nullopt: undecided, since one byte is not
/// enough.
std::optional<std::uint8_t> VersionAt(std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t version : {std::uint8_t{1}, std::uint8_t{2}}) {
    const GeneralKtcParser& parser = ParserOf(version);
    if (bytes[0] != parser.GetHeaderIdentifier0()) continue;
    if (bytes.size() == 1) return std::nullopt;
    if (bytes[1] == parser.GetHeaderIdentifier1()) return version;
  }
  return std::uint8_t{0};
}

}  // namespace

void KtcFrameSplitter::Append(std::span<const std::uint8_t> bytes) {
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
  position_ = 0;
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

std::optional<KtcFrame> KtcFrameSplitter::Next() {
  auto frame = FindHeader();
  if (!frame) return std::nullopt;
  const std::size_t header = ParserOf(frame->version).layout().header_size;
  if (Rest().size() - header < frame->announced) return std::nullopt;
  const auto payload = Rest().subspan(header, frame->announced);
  frame->payload.assign(payload.begin(), payload.end());
  position_ += header + frame->announced;
  return frame;
}

std::optional<KtcFrame> KtcFrameSplitter::TakeIncomplete() {
  auto frame = FindHeader();
  if (frame) {
    const auto payload = Rest().subspan(ParserOf(frame->version).layout().header_size);
    frame->payload.assign(payload.begin(), payload.end());
  } else {
    noise_ += Rest().size();
  }
  bytes_.clear();
  position_ = 0;
  return frame;
}

/// Skips noise and returns the header that follows.
std::optional<KtcFrame> KtcFrameSplitter::FindHeader() {
  for (; position_ < bytes_.size(); ++position_, ++noise_) {
    const auto version = VersionAt(Rest());
    if (!version) return std::nullopt;
    if (*version == 0) continue;
    const KtcLayout& layout = ParserOf(*version).layout();
    if (Rest().size() < layout.header_size) return std::nullopt;
    return KtcFrame{*version,
                    Rest()[layout.cmd],
                    Rest()[layout.return_code],
                    LoadBigEndian<std::uint32_t>(Rest(), layout.payload_length),
                    {}};
  }
  return std::nullopt;
}

}  // namespace quarn::lidar
