#include "libquarn/KtcClient/src/ktc_parser.h"

#include <algorithm>

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/trace.h"

namespace quarn::lidar {
namespace {

constexpr KtcLayout kLayout10 = {.header_size = 8, .cmd = 2, .return_code = 3, .payload_length = 4};
constexpr KtcLayout kLayout20 = {.header_size = 12, .cmd = 3, .return_code = 4, .payload_length = 8};

// Offsets within the header of a file-stream piece; the first four bytes are reserved.
constexpr std::size_t kPieceNumber = 4;
constexpr std::size_t kPieceTotal = 8;
constexpr std::size_t kPieceCrc = 12;

std::unique_ptr<const GeneralKtcParser> MakeParser(std::uint8_t version) {
  switch (version) {
    case 1:
      return std::make_unique<Ktc_1_0_parser>();
    case 2:
      return std::make_unique<Ktc_2_0_parser>();
    default:
      return nullptr;
  }
}

// The bytes of the range; empty if it is not entirely inside `in`.
std::vector<std::uint8_t> Slice(const std::vector<std::uint8_t>& in, std::int32_t offset,
                                std::int32_t length) {
  const std::int64_t end = std::int64_t{offset} + length;
  if (offset < 0 || length < 0 || end > static_cast<std::int64_t>(in.size())) {
    return {};
  }
  return {in.begin() + offset, in.begin() + end};
}

// Reuses the memory of `piece` from piece to piece.
void BuildPiece(std::span<const std::uint8_t> data, std::uint32_t number, std::uint32_t total,
                std::vector<std::uint8_t>& piece) {
  piece.assign(kFilePieceHeaderSize, 0);
  StoreBigEndian(piece, kPieceNumber, number);
  StoreBigEndian(piece, kPieceTotal, total);
  StoreBigEndian(piece, kPieceCrc, Crc32Mpeg2(data));
  piece.insert(piece.end(), data.begin(), data.end());
}

void ReportDecoded() {
  platform::TraceLine("Ktc_2_0_parser::KtcStreamDecode success!");
}

}  // namespace

void GeneralKtcParser::Encode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                              std::uint8_t cmd) const {
  const std::span<const std::uint8_t> header = header_template();
  frame.clear();
  frame.reserve(header.size() + payload.size());
  frame.assign(header.begin(), header.end());
  frame[layout_.cmd] = cmd;
  StoreBigEndian(frame, layout_.payload_length, static_cast<std::uint32_t>(payload.size()));
  frame.insert(frame.end(), payload.begin(), payload.end());
}

bool GeneralKtcParser::KtcFilestreamSend(std::span<const std::uint8_t> /*file*/, std::uint8_t /*cmd*/,
                                         std::vector<std::vector<std::uint8_t>>& /*frames*/) const {
  return true;
}

Ktc_1_0_parser::Ktc_1_0_parser() : GeneralKtcParser(kLayout10, {0x47, 0x74}) {}

bool Ktc_1_0_parser::KtcStreamEncode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                                     std::uint8_t cmd) const {
  Encode(payload, frame, cmd);
  return true;
}

bool Ktc_1_0_parser::KtcStreamDecode(std::uint8_t /*status*/, std::uint8_t /*byte*/,
                                     const std::vector<std::uint8_t>& in, std::int32_t offset,
                                     std::int32_t length, std::vector<std::uint8_t>& out) const {
  // This check uses the protocol's 32-bit numbers, which may wrap; the slice itself is checked without
  // wrapping.
  const auto end =
      static_cast<std::int32_t>(static_cast<std::uint32_t>(offset) + static_cast<std::uint32_t>(length));
  if (static_cast<std::int32_t>(in.size()) < end) {
    return false;
  }
  out = Slice(in, offset, length);
  return true;
}

bool Ktc_1_0_parser::KtcFilestreamSend(std::span<const std::uint8_t> file, std::uint8_t cmd,
                                       std::vector<std::vector<std::uint8_t>>& frames) const {
  const std::size_t total = (file.size() + kFilePieceSize - 1) / kFilePieceSize;
  frames.reserve(frames.size() + total);
  std::vector<std::uint8_t> piece;
  for (std::size_t number = 1; number <= total; ++number) {
    const auto data = file.first(std::min(file.size(), kFilePieceSize));
    BuildPiece(data, static_cast<std::uint32_t>(number), static_cast<std::uint32_t>(total), piece);
    std::vector<std::uint8_t> frame;
    if (!KtcStreamEncode(piece, frame, cmd)) {
      platform::TraceLine("GeneralKtcParser::KtcFilestreamSend pack frame failed!");
      return false;
    }
    frames.push_back(std::move(frame));
    file = file.subspan(data.size());
  }
  return true;
}

std::uint8_t Ktc_1_0_parser::GetHeaderIdentifier0() const {
  return header_template()[0];
}
std::uint8_t Ktc_1_0_parser::GetHeaderIdentifier1() const {
  return header_template()[1];
}
std::size_t Ktc_1_0_parser::GetHeaderSize() const {
  return kLayout10.header_size;
}
std::uint8_t Ktc_1_0_parser::GetReturnCode() const {
  return header_template()[kLayout10.return_code];
}
std::uint8_t Ktc_1_0_parser::GetCmd() const {
  return header_template()[kLayout10.cmd];
}
std::uint32_t Ktc_1_0_parser::GetPayloadLength() const {
  return LoadBigEndian<std::uint32_t>(header_template(), kLayout10.payload_length);
}

Ktc_2_0_parser::Ktc_2_0_parser() : GeneralKtcParser(kLayout20, {0x57, 0x75, 0x01}) {}

bool Ktc_2_0_parser::KtcStreamEncode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                                     std::uint8_t cmd) const {
  Encode(payload, frame, cmd);
  return true;
}

bool Ktc_2_0_parser::KtcStreamDecode(std::uint8_t status, std::uint8_t byte,
                                     const std::vector<std::uint8_t>& in, std::int32_t /*offset*/,
                                     std::int32_t /*length*/, std::vector<std::uint8_t>& out) const {
  switch (status) {
    case 1:
    case 3:
    case 5:
    case 7:
    case 9:
      out = in;
      ReportDecoded();
      return true;
    case 2:
    case 4:
    case 6:
    case 8:
      if (in.empty()) {
        return true;
      }
      out = in;
      return false;
    case 10:
      if (in.empty() && byte == 0) {
        return true;
      }
      out.push_back(byte);
      return false;
    default:
      ReportDecoded();
      return true;
  }
}

std::uint8_t Ktc_2_0_parser::GetHeaderIdentifier0() const {
  return header_template()[0];
}
std::uint8_t Ktc_2_0_parser::GetHeaderIdentifier1() const {
  return header_template()[1];
}
std::size_t Ktc_2_0_parser::GetHeaderSize() const {
  return kLayout20.header_size;
}
std::uint8_t Ktc_2_0_parser::GetReturnCode() const {
  return header_template()[kLayout20.return_code];
}
std::uint8_t Ktc_2_0_parser::GetCmd() const {
  return header_template()[kLayout20.cmd];
}
std::uint32_t Ktc_2_0_parser::GetPayloadLength() const {
  return LoadBigEndian<std::uint32_t>(header_template(), kLayout20.payload_length);
}

KtcParser::KtcParser(std::uint8_t version) : parser_(MakeParser(version)), version_(version) {}

bool KtcParser::KtcStreamEncode(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& frame,
                                std::uint8_t cmd) const {
  return parser_ && parser_->KtcStreamEncode(payload, frame, cmd);
}

bool KtcParser::KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                                std::int32_t offset, std::int32_t length,
                                std::vector<std::uint8_t>& out) const {
  return parser_ && parser_->KtcStreamDecode(status, byte, in, offset, length, out);
}

bool KtcParser::KtcFilestreamSend(std::span<const std::uint8_t> file, std::uint8_t cmd,
                                  std::vector<std::vector<std::uint8_t>>& frames) const {
  return parser_ && parser_->KtcFilestreamSend(file, cmd, frames);
}

}  // namespace quarn::lidar
