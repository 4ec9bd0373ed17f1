#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace quarn::lidar {

/// How byte values are written in a text: `count` numbers from 0 to 255 with the separator between them.
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
  kCount,   ///< more or fewer pieces than the format has
  kNumber,  ///< a piece that is not a number from 0 to 255 as a whole, or has too few or too many digits
};

struct ByteText {
  ByteTextFault fault = ByteTextFault::kNone;
  std::vector<std::uint8_t> bytes;  ///< in written order; empty when there is a fault

  explicit operator bool() const { return fault == ByteTextFault::kNone; }
};

/// Reads an address text. Signs and white space are no part of a number.
ByteText ReadByteText(std::string_view text, const ByteTextFormat& format);

}  // namespace quarn::lidar
