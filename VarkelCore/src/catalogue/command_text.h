#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace varkel {

/// A command as the tables write it, ready for the wire.
struct Command {
  std::uint8_t code = 0;                       ///< KTC command byte
  std::optional<std::uint32_t> extended_code;  ///< four-byte code in front of the payload
};

/// Bytes that a four-byte code takes at the front of request and reply payloads.
inline constexpr std::uint32_t kExtendedCodeSize = 4;

/// A text of five or more characters is a four-byte code.
inline bool IsExtendedCommand(const std::string& text) {
  return text.size() >= 5;
}

/// Shorter texts are the command byte itself (low byte, automatic base); longer ones a four-byte code that
/// travels under command 0xFF. Raises the conversion errors of text_number.h.
Command ParseCommandText(const std::string& text);

/// The request payload: the four-byte code, if there is one, big-endian, then `payload`.
std::vector<std::uint8_t> RequestPayload(const Command& command, std::span<const std::uint8_t> payload);

/// What follows the repeated four-byte code in a reply; the whole reply to other commands, and a
/// reply that repeats another code.
std::span<const std::uint8_t> ReplyContent(const Command& command, std::span<const std::uint8_t> reply);

/// Whether a reply repeats another four-byte code than the command's. All of them travel under one command
/// byte, so this is how the late reply to an earlier request shows.
bool AnswersAnother(const Command& command, std::span<const std::uint8_t> reply);

}  // namespace varkel
