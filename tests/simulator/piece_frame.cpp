#include "tests/simulator/piece_frame.h"

#include "libquarn/KtcClient/src/crc32_mpeg2.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {

std::vector<std::uint8_t> PieceFrame(std::uint8_t command, const Piece& piece) {
  std::vector<std::uint8_t> payload(quarn::lidar::kFilePieceHeaderSize);
  quarn::lidar::StoreBigEndian(payload, 0, piece.reserved);
  quarn::lidar::StoreBigEndian(payload, 4, piece.number);
  quarn::lidar::StoreBigEndian(payload, 8, piece.count);
  quarn::lidar::StoreBigEndian(payload, 12, piece.checksum.value_or(quarn::lidar::Crc32Mpeg2(piece.data)));
  payload.insert(payload.end(), piece.data.begin(), piece.data.end());
  std::vector<std::uint8_t> frame;
  quarn::lidar::Ktc_1_0_parser().KtcStreamEncode(payload, frame, command);
  return frame;
}

}  // namespace varkel::sim
