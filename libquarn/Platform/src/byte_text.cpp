#include "libquarn/Platform/src/byte_text.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

namespace quarn::lidar {

namespace {

std::optional<std::uint8_t> ReadByte(std::string_view digits, const ByteTextFormat& format) {
  if (digits.size() < format.min_digits || digits.size() > format.max_digits) return std::nullopt;
  std::uint8_t value = 0;  // from_chars accepts no sign for an unsigned number
  const char* const digits_end = digits.data() + digits.size();
  const auto [end, error] = std::from_chars(digits.data(), digits_end, value, format.base);
  if (error != std::errc() || end != digits_end) return std::nullopt;
  return value;
}

}  // namespace

ByteText ReadByteText(std::string_view text, const ByteTextFormat& format) {
  const auto separators = static_cast<std::size_t>(std::count(text.begin(), text.end(), format.separator));
  if (separators + 1 != format.count) return {ByteTextFault::kCount, {}};
  ByteText result;
  result.bytes.reserve(format.count);
  for (std::size_t i = 0; i < format.count; ++i) {
    const std::string_view digits = text.substr(0, text.find(format.separator));
    const auto byte = ReadByte(digits, format);
    if (!byte) return {ByteTextFault::kNumber, {}};
    result.bytes.push_back(*byte);
    text.remove_prefix(std::min(text.size(), digits.size() + 1));
  }
  return result;
}

}  // namespace quarn::lidar
