#include "simulator/src/command_key.h"

#include "VarkelCore/src/command_text.h"
#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {
namespace {

constexpr std::uint8_t kExtendedCommand = 0xFF;

}  // namespace

CommandKey KeyOfText(const std::string& text) {
  const Command command = ParseCommandText(text);
  return {command.code, command.extended_code};
}

CommandKey KeyOfRequest(const ReceivedRequest& request) {
  CommandKey key{request.command, std::nullopt};
  if (request.command == kExtendedCommand && request.payload.size() >= kExtendedCodeSize) {
    key.extended_code = quarn::lidar::LoadBigEndian<std::uint32_t>(request.payload, 0);
  }
  return key;
}

}  // namespace varkel::sim
