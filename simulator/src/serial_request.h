#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "libquarn/Source/src/serial_frame.h"

namespace varkel::sim {

/// A request to a small sensor, over a serial line or inside KTC.
struct SerialRequest {
  quarn::lidar::ReplyKind kind = quarn::lidar::ReplyKind::kCommand;
  std::uint8_t code = 0;              ///< command code (2 get, 3 set), or firmware frame type
  std::vector<std::uint8_t> payload;  ///< a command's, its first byte the item; or a firmware frame's data
  std::uint32_t first = 0;            ///< a firmware frame's two values
  std::uint32_t second = 0;
};

/// The request if the block is exactly one valid frame, otherwise nullopt.
std::optional<SerialRequest> ParseSerialRequest(std::span<const std::uint8_t> frame);

/// Splits the bytes of a line, received in pieces of any size, into requests. Bytes that do not begin a valid
/// frame are skipped. Stores at most one frame of maximum length besides the last piece.
class SerialRequestReader {
 public:
  /// Maximum data of a firmware frame; one that announces more is noise.
  static constexpr std::size_t kMaxData = 4096;

  void Append(std::span<const std::uint8_t> bytes);

  /// The next complete request, or nullopt until more bytes arrive.
  std::optional<SerialRequest> Next();

  /// Whether an incomplete request is waiting for the rest.
  bool is_waiting() const { return !bytes_.empty(); }
  /// Discards it, because the rest did not arrive.
  void Reset() { bytes_.clear(); }

 private:
  void Drop(std::size_t count);

  std::vector<std::uint8_t> bytes_;
};

}  // namespace varkel::sim
