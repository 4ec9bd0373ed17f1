#include "VarkelCore/src/catalogue/command_text.h"

#include <charconv>

#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {
namespace {

constexpr int kAutomaticBase = 0;

// Reads all 32 bits of "0x…", since TextToInt only goes to the largest signed number. Other texts are left to
// TextToInt.
std::optional<std::uint32_t> FullHexCode(const std::string& text) {
  constexpr std::size_t kPrefixSize = 2;
  constexpr int kHexadecimal = 16;
  if (!text.starts_with("0x") && !text.starts_with("0X")) {
    return std::nullopt;
  }
  std::uint32_t code = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + kPrefixSize, end, code, kHexadecimal);
  if (result.ec != std::errc() || result.ptr != end) {
    return std::nullopt;
  }
  return code;
}

std::uint32_t CodeNumber(const std::string& text) {
  if (const auto code = FullHexCode(text)) {
    return *code;
  }
  return static_cast<std::uint32_t>(quarn::lidar::TextToInt(text, kAutomaticBase));
}

}  // namespace

Command ParseCommandText(const std::string& text) {
  const std::uint32_t code = CodeNumber(text);
  if (IsExtendedCommand(text)) {
    return {quarn::lidar::kKtcExtensionCmd, code};
  }
  return {static_cast<std::uint8_t>(code), std::nullopt};
}

std::vector<std::uint8_t> RequestPayload(const Command& command, std::span<const std::uint8_t> payload) {
  std::vector<std::uint8_t> request;
  request.reserve(kExtendedCodeSize + payload.size());
  if (command.extended_code) {
    request.resize(kExtendedCodeSize);
    quarn::lidar::StoreBigEndian(std::span(request), 0, *command.extended_code);
  }
  request.insert(request.end(), payload.begin(), payload.end());
  return request;
}

std::span<const std::uint8_t> ReplyContent(const Command& command, std::span<const std::uint8_t> reply) {
  const bool has_code = command.extended_code && reply.size() >= kExtendedCodeSize;
  return has_code && !AnswersOtherCommand(command, reply) ? reply.subspan(kExtendedCodeSize) : reply;
}

bool AnswersOtherCommand(const Command& command, std::span<const std::uint8_t> reply) {
  return command.extended_code && reply.size() >= kExtendedCodeSize &&
         quarn::lidar::LoadBigEndian<std::uint32_t>(reply, 0) != *command.extended_code;
}

}  // namespace varkel
