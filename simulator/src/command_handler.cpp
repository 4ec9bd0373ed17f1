#include "simulator/src/command_handler.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/Platform/src/byte_order.h"
#include "simulator/src/sensor_log.h"

namespace varkel::sim {
namespace {

const CommandKey kProbe{0x07, std::nullopt};
const CommandKey kSecondProbe{0x08, std::nullopt};
const CommandKey kWriteFieldOfView{quarn::lidar::kWriteChannelFovCmd, std::nullopt};
const CommandKey kReadFieldOfView{quarn::lidar::kQueryMultiFovCmd, std::nullopt};

bool Contains(const std::vector<std::size_t>& sizes, std::size_t size) {
  return std::find(sizes.begin(), sizes.end(), size) != sizes.end();
}

constexpr std::size_t kSelectorSize = 2;

/// Writes the code of a four-byte command to the beginning of the reply, where `payload` has room for it.
void PutCode(const CommandKey& key, std::vector<std::uint8_t>& payload) {
  if (!key.extended_code) return;
  payload.resize(std::max<std::size_t>(payload.size(), kExtendedCodeSize));
  quarn::lidar::StoreBigEndian(payload, 0, *key.extended_code);
}

Reply Success(const CommandKey& key, std::vector<std::uint8_t> payload = {}) {
  PutCode(key, payload);
  return {kSuccess, std::move(payload)};
}

/// A reply whose content does not consist of variables.
Reply Content(const CommandKey& key, std::span<const std::uint8_t> content) {
  std::vector<std::uint8_t> payload(key.extended_code ? kExtendedCodeSize : 0);
  payload.insert(payload.end(), content.begin(), content.end());
  return Success(key, std::move(payload));
}

Reply OperationLog(const VarInfo& row, const CommandKey& key, std::span<const std::uint8_t> payload) {
  if (payload.size() != row.get_cmd_payload_bytes.size() + kSelectorSize) return {kWrongPayloadSize, {}};
  const auto part = OperationLogPart(payload.last(kSelectorSize));
  return part ? Content(key, *part) : Reply{kWrongPayloadSize, {}};
}

}  // namespace

CommandHandler::CommandHandler(std::shared_ptr<const ConfigParser> model, SensorState& state,
                               FirmwareStore& firmware)
    : model_(std::move(model)), state_(state), firmware_(firmware) {
  AddReads();
  AddWrites();
  for (const CommandKey& probe : {kProbe, kSecondProbe}) {
    Route& route = routes_[probe];
    if (!Contains(route.get_sizes, 0)) route.get_sizes.push_back(0);
  }
}

void CommandHandler::AddReads() {
  for (const auto& [command, vars] : model_->get_cmd_map()) {
    Route& route = RouteOf(command);
    route.get_cmd = command;
    for (const VarInfo* var : vars) {
      const std::size_t size = var->get_cmd_payload_bytes.size();
      if (!Contains(route.get_sizes, size)) route.get_sizes.push_back(size);
    }
    route.action = ActionOfReads(vars);
    route.action_row = vars.front();
  }
}

void CommandHandler::AddWrites() {
  for (const auto& [command, vars] : model_->set_cmd_map()) {
    Route& route = RouteOf(command);
    route.set_cmd = command;
    // A command that also reads a value is not an action.
    if (!route.get_cmd.empty() && route.action == CommandAction::kNone) continue;
    route.action = ActionOfWrites(vars);
    route.action_row = vars.front();
  }
}

CommandHandler::Route& CommandHandler::RouteOf(const std::string& command) {
  try {
    return routes_[KeyOfText(command)];
  } catch (const std::exception& error) {
    throw std::runtime_error("The table " + model_->path() + " can't be simulated: the command \"" + command +
                             "\" is not a number (" + error.what() + ").");
  }
}

const CommandHandler::Route* CommandHandler::FindRoute(const CommandKey& key) const {
  const auto found = routes_.find(key);
  return found == routes_.end() ? nullptr : &found->second;
}

void CommandHandler::AddUpgradeCommand(std::uint8_t command) {
  routes_[{command, std::nullopt, CommandFamily::kKtc}].action = CommandAction::kUpgrade;
}

Reply CommandHandler::Handle(const ReceivedRequest& request, std::optional<std::int64_t> clamp) {
  const std::span<const std::uint8_t> payload(request.payload);
  const CommandKey key = KeyOfRequest(request);
  if (const Route* const route = FindRoute(key)) {
    return Run(*route, key, key.extended_code ? payload.subspan(kExtendedCodeSize) : payload, clamp);
  }
  const CommandKey plain{request.command, std::nullopt};
  if (const Route* const route = FindRoute(plain)) return Run(*route, plain, payload, clamp);
  return {kUnknownCommand, {}};
}

Reply CommandHandler::Run(const Route& route, const CommandKey& key, std::span<const std::uint8_t> payload,
                          std::optional<std::int64_t> clamp) {
  if (route.action != CommandAction::kNone) return RunAction(route, key, payload);
  if (Contains(route.get_sizes, payload.size())) return Read(route, key);
  if (!route.set_cmd.empty()) return Write(route, key, payload, clamp);
  return {kWrongPayloadSize, {}};
}

Reply CommandHandler::RunAction(const Route& route, const CommandKey& key,
                                std::span<const std::uint8_t> payload) {
  switch (route.action) {
    case CommandAction::kLog:
      return Content(key, SensorLog(route.action_row->var_name));
    case CommandAction::kOperationLog:
      return OperationLog(*route.action_row, key, payload);
    case CommandAction::kUpgrade: {
      const ReturnCode code = firmware_.Receive(key.code, payload);
      return code == kSuccess ? Success(key) : Reply{code, {}};
    }
    case CommandAction::kReset:
      state_.RestoreDefaults();
      field_of_view_.Reset();
      [[fallthrough]];
    case CommandAction::kRestart: {
      Reply reply = Success(key);
      reply.restarts = true;
      return reply;
    }
    case CommandAction::kAcknowledge:
    case CommandAction::kNone:
      break;
  }
  return route.get_cmd.empty() ? Success(key) : Read(route, key);
}

Reply CommandHandler::Read(const Route& route, const CommandKey& key) const {
  std::vector<std::uint8_t> payload = state_.Read(route.get_cmd);
  if (key == kReadFieldOfView && !payload.empty()) return Success(key, field_of_view_.Reply(payload[0]));
  return Success(key, std::move(payload));
}

Reply CommandHandler::Write(const Route& route, const CommandKey& key, std::span<const std::uint8_t> payload,
                            std::optional<std::int64_t> clamp) {
  if (key == kWriteFieldOfView) return WriteFieldOfView(route, payload);
  return state_.Write(route.set_cmd, payload, clamp) ? Success(key) : Reply{kWrongPayloadSize, {}};
}

Reply CommandHandler::WriteFieldOfView(const Route& route, std::span<const std::uint8_t> payload) {
  if (payload.size() != FieldOfView::kWriteSize) return {kWrongPayloadSize, {}};
  if (!FieldOfView::IsValid(payload)) return {kValueNotAllowed, {}};
  field_of_view_.Store(payload);
  // The channel byte comes first and is the payload's only field in the table.
  state_.Write(route.set_cmd, payload.first(1));
  return Success(kWriteFieldOfView);
}

}  // namespace varkel::sim
