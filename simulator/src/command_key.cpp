#include "simulator/src/command_key.h"

#include "VarkelCore/src/catalogue/command_text.h"
#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/Platform/src/byte_order.h"

namespace varkel::sim {

CommandKey KeyOfText(const std::string& text) {
  const Command command = ParseCommandText(text);
  return {command.code, command.extended_code, CommandFamily::kKtc};
}

CommandKey KeyOfRequest(const ReceivedRequest& request) {
  CommandKey key{request.command, std::nullopt, CommandFamily::kKtc};
  if (request.command == quarn::lidar::kKtcExtensionCmd && request.payload.size() >= kExtendedCodeSize) {
    key.extended_code = quarn::lidar::LoadBigEndian<std::uint32_t>(request.payload, 0);
  }
  return key;
}

CommandKey KeyOfRequest(const SerialRequest& request) {
  if (request.kind == quarn::lidar::ReplyKind::kOta) {
    return {request.code, std::nullopt, CommandFamily::kFirmware};
  }
  const std::uint8_t item = request.payload.empty() ? 0 : request.payload.front();
  return {item, request.code, CommandFamily::kSerialCommand};
}

}  // namespace varkel::sim
