#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace varkel {

/// Why an exchange failed, in words: `code` is the sensor's (1 to 255) or the client's (negative).
std::string ExchangeCodeText(std::int32_t code);

/// Formats bytes as "01 a0", and parses them; any other text gives no bytes.
std::string RawText(std::span<const std::uint8_t> bytes);
std::vector<std::uint8_t> RawBytes(const std::string& text);

}  // namespace varkel
