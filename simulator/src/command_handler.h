#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "simulator/src/command_action.h"
#include "simulator/src/command_key.h"
#include "simulator/src/exchange_log.h"
#include "simulator/src/field_of_view.h"
#include "simulator/src/firmware_store.h"
#include "simulator/src/return_code.h"
#include "simulator/src/sensor_state.h"

namespace varkel::sim {

struct Reply {
  std::uint8_t return_code = kSuccess;
  std::vector<std::uint8_t> payload;
  bool restarts = false;  ///< the sensor restarts after the reply is sent
};

/// Answers every command of a model's table, and the two commands with which a client checks that a sensor is
/// present. Thread-safe.
class CommandHandler {
 public:
  /// `state` and `firmware` must outlive the handler. Raises std::runtime_error for a command text that is
  /// not a number.
  CommandHandler(std::shared_ptr<const ConfigParser> model, SensorState& state, FirmwareStore& firmware);

  /// Makes a command that the table lacks accept firmware packages. Call before the first Handle.
  void AddUpgradeCommand(std::uint8_t command);

  /// A write stores raw numbers of at most `clamp`, if it is set.
  Reply Handle(const ReceivedRequest& request, std::optional<std::int64_t> clamp = std::nullopt);

 private:
  /// What the table says about a command, which may both read and write.
  struct Route {
    std::string get_cmd;
    std::string set_cmd;
    std::vector<std::size_t> get_sizes;  ///< sizes of the request payloads that read it
    CommandAction action = CommandAction::kNone;
    const VarInfo* action_row = nullptr;  ///< the row that makes it an action
  };

  void AddReads();
  void AddWrites();
  Route& RouteOf(const std::string& command);
  const Route* FindRoute(const CommandKey& key) const;
  Reply Run(const Route& route, const CommandKey& key, std::span<const std::uint8_t> payload,
            std::optional<std::int64_t> clamp);
  Reply RunAction(const Route& route, const CommandKey& key, std::span<const std::uint8_t> payload);
  Reply Read(const Route& route, const CommandKey& key) const;
  Reply Write(const Route& route, const CommandKey& key, std::span<const std::uint8_t> payload,
              std::optional<std::int64_t> clamp);
  Reply WriteFieldOfView(const Route& route, std::span<const std::uint8_t> payload);

  const std::shared_ptr<const ConfigParser> model_;
  SensorState& state_;
  FirmwareStore& firmware_;
  FieldOfView field_of_view_;
  std::map<CommandKey, Route> routes_;  // constant from the first Handle on
};

}  // namespace varkel::sim
