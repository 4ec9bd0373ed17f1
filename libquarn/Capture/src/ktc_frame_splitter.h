#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quarn::lidar {

/// A KTC frame, request or reply.
struct KtcFrame {
  std::uint8_t version = 0;  ///< 1 or 2
  std::uint8_t command = 0;
  std::uint8_t return_code = 0;
  std::uint32_t announced = 0;  ///< payload length in the header, in bytes
  std::vector<std::uint8_t> payload;
};

/// Splits one direction of a connection, which may arrive in pieces of any size, into frames. Never buffers
/// more than the bytes received.
class KtcFrameSplitter {
 public:
  void Append(std::span<const std::uint8_t> bytes);

  /// The next complete frame; nullopt until more bytes come.
  std::optional<KtcFrame> Next();

  /// The frame with a complete header but an incomplete payload, if there is one. Empties the splitter.
  std::optional<KtcFrame> TakeIncomplete();

  /// The number of bytes so far that belong to no frame.
  std::uint64_t noise() const { return noise_; }

 private:
  std::optional<KtcFrame> FindHeader();
  std::span<const std::uint8_t> Rest() const { return std::span(bytes_).subspan(position_); }

  std::vector<std::uint8_t> bytes_;
  std::size_t position_ = 0;  // of the first unused byte
  std::uint64_t noise_ = 0;
};

}  // namespace quarn::lidar
