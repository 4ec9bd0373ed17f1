#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace varkel {

/// A command parsed from a table's text, ready for the wire.
struct Command {
  std::uint8_t code = 0;                       ///< KTC command byte
  std::optional<std::uint32_t> extended_code;  ///< four-byte code in front of the payload
};

/// The size of a four-byte code, with which request and reply payloads then begin.
inline constexpr std::uint32_t kExtendedCodeSize = 4;

/// A text of five or more characters is a four-byte code.
inline bool IsExtendedCommand(const std::string& text) {
  return text.size() >= 5;
}

/// A shorter text is the command byte itself (low byte, base taken from the prefix); a longer one is a
/// four-byte code, which is sent with command 0xFF. Raises the conversion errors of text_number.h.
Command ParseCommandText(const std::string& text);

/// The request payload: the four-byte code in big-endian order, if there is one, then `payload`.
std::vector<std::uint8_t> RequestPayload(const Command& command, std::span<const std::uint8_t> payload);

/// The part of a reply after its echo of the four-byte code. For other commands, and for a reply that echoes
/// another code, the whole reply.
std::span<const std::uint8_t> ReplyContent(const Command& command, std::span<const std::uint8_t> reply);

/// Whether a reply echoes a four-byte code other than the command's. All four-byte codes share one command
/// byte, so this is how a late reply to an earlier request is recognised.
bool AnswersOtherCommand(const Command& command, std::span<const std::uint8_t> reply);

}  // namespace varkel
