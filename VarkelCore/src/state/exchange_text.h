#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace varkel {

/// Why an exchange failed, in words: `code` is the sensor's (1 to 255) or the client's (negative).
std::string ExchangeCodeText(std::int32_t code);

/// Parses bytes like "01 a0", as quarn::lidar::HexText formats them; any other text gives no bytes.
std::vector<std::uint8_t> RawBytes(const std::string& text);

}  // namespace varkel
