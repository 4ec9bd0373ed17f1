#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace varkel {

/// Why an exchange brought nothing, in words: the sensor's code (1 to 255) or the client's (negative).
std::string ExchangeCodeText(std::int32_t code);

/// Bytes as "01 a0", and back. Text that is anything else gives no bytes.
std::string RawText(std::span<const std::uint8_t> bytes);
std::vector<std::uint8_t> RawBytes(const std::string& text);

}  // namespace varkel
