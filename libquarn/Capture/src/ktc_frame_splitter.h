#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quarn::lidar {

/// A KTC frame of either direction.
struct KtcFrame {
  std::uint8_t version = 0;  ///< 1 or 2
  std::uint8_t command = 0;
  std::uint8_t return_code = 0;
  std::uint32_t announced = 0;  ///< payload bytes that the header tells
  std::vector<std::uint8_t> payload;
};

/// Cuts one direction of a connection, in whatever pieces it comes, into frames. Holds no more than what
/// came.
class KtcFrameSplitter {
 public:
  void Append(std::span<const std::uint8_t> bytes);

  /// The next whole frame, or nothing until more bytes come.
  std::optional<KtcFrame> Next();

  /// The frame whose header has come but not all of its payload, if there is one. The splitter is empty
  /// afterwards.
  std::optional<KtcFrame> TakeIncomplete();

  /// Bytes that belong to no frame, so far.
  std::uint64_t noise() const { return noise_; }

 private:
  std::optional<KtcFrame> FindHeader();
  std::span<const std::uint8_t> Rest() const { return std::span(bytes_).subspan(position_); }

  std::vector<std::uint8_t> bytes_;
  std::size_t position_ = 0;  // of the first byte that is not used
  std::uint64_t noise_ = 0;
};

}  // namespace quarn::lidar
