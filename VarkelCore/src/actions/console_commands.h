#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "VarkelCore/src/actions/command_console.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Sends the console's commands to the connected sensor, whatever its connection type. Thread-safe.
class ConsoleCommands {
 public:
  struct Events {
    std::function<void()> history_changed;  ///< a command was sent, answered or not
    /// A command restarted or reset this session's sensor, which no longer answers.
    std::function<void(const std::shared_ptr<SensorSession>&)> restarted;
  };

  /// `connect_type` belongs to the controller; all arguments outlive this object.
  ConsoleCommands(const SensorConnection& connection, const Activity& activity, const ModelSelection& models,
                  const std::atomic<int>& connect_type, UserReport& report, Events events);

  /// Takes the texts of CommandConsole::Send. Blocks for one exchange; every outcome is reported.
  void Send(const std::string& command, const std::string& payload);

  /// Clears the history and the last reply, which belong to the previous model.
  void Forget();

  /// The last reply decoded with the selected model's table, for a monospaced font; empty if there is none.
  std::string DecodedReply() const;

  const CommandConsole& console() const { return console_; }

 private:
  std::optional<CommandConsole::Channel> ChooseChannel(const std::shared_ptr<SensorSession>& session) const;

  const SensorConnection& connection_;
  const Activity& activity_;
  const ModelSelection& models_;
  const std::atomic<int>& connect_type_;
  UserReport& report_;
  const Events events_;
  CommandConsole console_;
};

}  // namespace varkel
