#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace quarn::lidar {

/// A text format for byte values: `count` numbers from 0 to 255, separated by `separator`.
struct ByteTextFormat {
  char separator = '.';
  std::size_t count = 4;
  int base = 10;
  std::size_t min_digits = 1;  ///< of each number, leading zeros included
  std::size_t max_digits = std::numeric_limits<std::size_t>::max();
};

/// "192.168.1.201"
inline constexpr ByteTextFormat kIpv4Text = {};

enum class ByteTextFault {
  kNone,
  kCount,   ///< the wrong number of pieces
  kNumber,  ///< a piece is not entirely a number from 0 to 255, or has too few or too many digits
};

struct ByteText {
  ByteTextFault fault = ByteTextFault::kNone;
  std::vector<std::uint8_t> bytes;  ///< in written order; empty if there is a fault

  explicit operator bool() const { return fault == ByteTextFault::kNone; }
};

/// Parses text in this format. Signs and white space are not allowed.
ByteText ReadByteText(std::string_view text, const ByteTextFormat& format);

}  // namespace quarn::lidar
