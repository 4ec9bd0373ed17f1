#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "libquarn/Source/src/serial_frame.h"

namespace varkel::sim {

/// A request as it came to a small sensor, over a serial line or inside KTC.
struct SerialRequest {
  quarn::lidar::ReplyKind kind = quarn::lidar::ReplyKind::kCommand;
  std::uint8_t code = 0;              ///< command code (2 get, 3 set), or firmware frame type
  std::vector<std::uint8_t> payload;  ///< a command's, its first byte the item; or a firmware frame's data
  std::uint32_t first = 0;            ///< a firmware frame's two values
  std::uint32_t second = 0;
};

/// A block that is exactly one good request frame; nothing for any other.
std::optional<SerialRequest> ParseSerialRequest(std::span<const std::uint8_t> frame);

/// Cuts the bytes of a line, in whatever pieces they come, into requests. Bytes that begin no good frame are
/// skipped. Holds no more than one longest frame besides what was appended last.
class SerialRequestReader {
 public:
  /// The most data of a firmware frame; one that claims more is noise.
  static constexpr std::size_t kMaxData = 4096;

  void Append(std::span<const std::uint8_t> bytes);

  /// The next complete request, or nothing until more bytes come.
  std::optional<SerialRequest> Next();

  /// Whether the beginning of a request waits for the rest.
  bool is_waiting() const { return !bytes_.empty(); }
  /// Forgets it: its rest never came.
  void Reset() { bytes_.clear(); }

 private:
  void Drop(std::size_t count);

  std::vector<std::uint8_t> bytes_;
};

}  // namespace varkel::sim
