#include "VarkelCore/src/actions/console_commands.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/values/decoded_text.h"

namespace varkel {

namespace {
constexpr std::uint8_t kRestartCommand = 0x10;
constexpr std::uint8_t kResetCommand = 0x25;
}  // namespace

ConsoleCommands::ConsoleCommands(const SensorConnection& connection, const Activity& activity,
                                 const ModelSelection& models, const std::atomic<int>& connect_type,
                                 UserReport& report, Events events)
    : connection_(connection),
      activity_(activity),
      models_(models),
      connect_type_(connect_type),
      report_(report),
      events_(std::move(events)),
      console_(report) {}

void ConsoleCommands::Send(const std::string& command, const std::string& payload) {
  const auto session = connection_.session();
  const auto channel = ChooseChannel(session);
  if (!channel) return;
  std::uint8_t code = 0;
  const auto outcome = console_.Send(*channel, command, payload, code);
  if (outcome == CommandConsole::Outcome::kRefused) return;
  if (const auto catalogue = models_.catalogue(); catalogue && outcome == CommandConsole::Outcome::kFailed) {
    report_.Log(console_.FailureText(ExchangeDecoder(catalogue)), "WARNING");
  }
  events_.history_changed();
  if (outcome != CommandConsole::Outcome::kSent || (code != kRestartCommand && code != kResetCommand)) return;
  events_.restarted(session);
  report_.Success(code == kRestartCommand ? "Lidar restart." : "Lidar reset.");
}

void ConsoleCommands::Forget() {
  console_.Forget();
  events_.history_changed();
}

std::string ConsoleCommands::DecodedReply() const {
  const auto catalogue = models_.catalogue();
  return catalogue ? DecodedText(console_.DecodedReply(ExchangeDecoder(catalogue))) : std::string();
}

/// KTC commands for a network sensor, serial ones for a small sensor; nullopt if no command can be sent now.
/// That is reported only for a small sensor; for a network sensor the window shows it itself.
std::optional<CommandConsole::Channel> ConsoleCommands::ChooseChannel(
    const std::shared_ptr<SensorSession>& session) const {
  if (connect_type_ == kNetwork) {
    if (!session || !session->is_ktc_open() || !session->is_idle()) return std::nullopt;
    return CommandConsole::KtcChannel(session->ktc_client());
  }
  if (!session || session->has_ended() || activity_.is_upgrading()) {
    report_.Error("lidar is not connected, or lidar is upgrade");
    return std::nullopt;
  }
  // Decided by the session: a function refused over the serial lines has set the controller's type to a KTC
  // one.
  return CommandConsole::SerialChannel(session->serial_exchange(), session->ktc_client() != nullptr);
}

}  // namespace varkel
