#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/config_parser.h"
#include "simulator/src/command_key.h"
#include "simulator/src/exchange_log.h"
#include "simulator/src/field_of_view.h"
#include "simulator/src/sensor_state.h"

namespace varkel::sim {

/// The sensor's return codes. 0 is success.
enum ReturnCode : std::uint8_t {
  kSuccess = 0,
  kUnknownCommand = 1,
  kWrongPayloadSize = 2,
  kValueNotAllowed = 3,
};

struct Reply {
  std::uint8_t return_code = kSuccess;
  std::vector<std::uint8_t> payload;
};

/// Answers every command of a model's table, and the two commands with which a client looks whether a
/// sensor is there. Thread-safe.
class CommandHandler {
 public:
  /// `state` outlives the handler. Raises std::runtime_error for a command text that is no number.
  CommandHandler(std::shared_ptr<const ConfigParser> model, SensorState& state);

  Reply Handle(const ReceivedRequest& request);

 private:
  /// What the table says about one command. A command may be read and written.
  struct Route {
    std::string get_cmd;
    std::string set_cmd;
    std::vector<std::size_t> get_sizes;  ///< sizes of the request payloads that read it
    bool is_action = false;              ///< restart, logs, upgrade: takes any payload
  };

  void AddReads();
  void AddWrites();
  Route& RouteOf(const std::string& command);
  const Route* FindRoute(const CommandKey& key) const;
  Reply Run(const Route& route, const CommandKey& key, std::span<const std::uint8_t> payload);
  Reply Read(const Route& route, const CommandKey& key) const;
  Reply Write(const Route& route, const CommandKey& key, std::span<const std::uint8_t> payload);
  Reply WriteFieldOfView(const Route& route, std::span<const std::uint8_t> payload);

  const std::shared_ptr<const ConfigParser> model_;
  SensorState& state_;
  FieldOfView field_of_view_;
  std::map<CommandKey, Route> routes_;  // constant after construction
};

}  // namespace varkel::sim
