#include "simulator/src/firmware_store.h"

#include <utility>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/byte_order.h"
#include "simulator/src/firmware_version.h"
#include "simulator/src/reply_frame.h"

namespace varkel::sim {
namespace {

using quarn::lidar::kFilePieceHeaderSize;
using quarn::lidar::kFilePieceSize;
using quarn::lidar::LoadBigEndian;

// Offsets in a piece.
constexpr std::size_t kReserved = 0;
constexpr std::size_t kNumber = 4;
constexpr std::size_t kCount = 8;
constexpr std::size_t kChecksum = 12;

/// The payload of a request frame of version 1.0 whose announced length is exact.
std::optional<std::span<const std::uint8_t>> PayloadOf(std::span<const std::uint8_t> frame,
                                                       std::uint8_t command) {
  const auto& parser = ParserOf(1);
  const quarn::lidar::KtcLayout& layout = parser.layout();
  if (frame.size() < layout.header_size) return std::nullopt;
  const auto payload = frame.subspan(layout.header_size);
  const bool good = frame[0] == parser.GetHeaderIdentifier0() && frame[1] == parser.GetHeaderIdentifier1() &&
                    frame[layout.cmd] == command && frame[layout.return_code] == 0 &&
                    LoadBigEndian<std::uint32_t>(frame, layout.payload_length) == payload.size();
  return good ? std::optional(payload) : std::nullopt;
}

}  // namespace

ReturnCode FirmwareStore::Receive(std::uint8_t command, std::span<const std::uint8_t> frame) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto piece = PayloadOf(frame, command);
  const ReturnCode code = piece && piece->size() >= kFilePieceHeaderSize ? TakePiece(*piece) : kBadPieceFrame;
  if (code != kSuccess) EndTransfer();
  return code;
}

ReturnCode FirmwareStore::TakePiece(std::span<const std::uint8_t> piece) {
  const auto number = LoadBigEndian<std::uint32_t>(piece, kNumber);
  const auto count = LoadBigEndian<std::uint32_t>(piece, kCount);
  const auto data = piece.subspan(kFilePieceHeaderSize);
  if (LoadBigEndian<std::uint32_t>(piece, kReserved) != 0) return kBadPieceReserved;
  if (const ReturnCode code = CheckPlace(number, count); code != kSuccess) return code;
  const bool is_last = number == count;
  if (data.empty() || data.size() > kFilePieceSize || (!is_last && data.size() != kFilePieceSize)) {
    return kBadPieceSize;
  }
  if (LoadBigEndian<std::uint32_t>(piece, kChecksum) != quarn::lidar::Crc32Mpeg2(data)) {
    return kBadPieceChecksum;
  }

  if (number == 1) EndTransfer();
  arriving_.insert(arriving_.end(), data.begin(), data.end());
  piece_count_ = count;
  next_number_ = number + 1;
  if (is_last) {
    package_ = std::move(arriving_);
    EndTransfer();
  }
  return kSuccess;
}

ReturnCode FirmwareStore::CheckPlace(std::uint32_t number, std::uint32_t count) const {
  if (number != 1 && number != next_number_) return kBadPieceNumber;
  if (count == 0 || count > kMostPieces) return kBadPieceCount;
  if (number != 1 && count != piece_count_) return kBadPieceCount;
  return kSuccess;
}

void FirmwareStore::EndTransfer() {
  arriving_.clear();
  next_number_ = 1;
  piece_count_ = 0;
}

std::vector<std::uint8_t> FirmwareStore::Package() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return package_;
}

std::optional<std::string> FirmwareStore::Install() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (const auto version = FirmwareVersionIn(package_)) running_version_ = version;
  return running_version_;
}

}  // namespace varkel::sim
