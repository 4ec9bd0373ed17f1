#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/catalogue/var_info.h"
#include "simulator/src/clock.h"
#include "simulator/src/live_value.h"

namespace varkel::sim {

/// The bytes of every variable of a model, laid out into replies and taken from set payloads where the
/// model's table puts them. All operations are thread-safe.
class SensorState {
 public:
  /// Every variable starts from its default. Raises std::runtime_error with a sentence that names table
  /// and variable when a default can't be encoded or a field is absurdly long.
  SensorState(std::shared_ptr<const ConfigParser> model, Clock clock);

  /// The reply payload of a get command of the table. In front of a four-byte command's fields are four
  /// zero bytes, the place of its code.
  std::vector<std::uint8_t> Read(const std::string& get_cmd) const;

  /// Bytes that a payload of the set command has; nullopt if its length is free.
  std::optional<std::size_t> SetSize(const std::string& set_cmd) const;
  /// Stores a set payload, without any four-byte code; whole numbers beyond `clamp` are stored as that.
  /// False, and nothing stored, for a wrong size.
  bool Write(const std::string& set_cmd, std::span<const std::uint8_t> payload,
             std::optional<std::int64_t> clamp = std::nullopt);

  /// All variables back to their defaults; those that move do so again.
  void RestoreDefaults();
  /// Running times and counters start again from their values at power-up.
  void PowerUp();

  /// The variable's value as the user interface shows it. Raises std::out_of_range for an unknown name.
  std::string ValueText(const std::string& var_name) const;
  /// Raises std::out_of_range for an unknown name, std::invalid_argument for a text that doesn't fit.
  /// From then on the variable no longer moves by itself.
  void SetValue(const std::string& var_name, const std::string& text);

 private:
  struct Value {
    std::vector<std::uint8_t> bytes;  ///< at power-up, if it moves
    LiveKind live = LiveKind::kFixed;
    std::size_t ordinal = 0;
  };

  void SetDefaultsLocked();
  const VarInfo& Find(const std::string& var_name) const;
  std::vector<std::uint8_t> BytesNow(const VarInfo& var) const;

  const std::shared_ptr<const ConfigParser> model_;
  const Clock clock_;
  mutable std::mutex mutex_;
  std::chrono::milliseconds power_up_{0};   // on the clock; guarded by mutex_
  std::map<const VarInfo*, Value> values_;  // the map is constant, mutex_ guards its values
};

}  // namespace varkel::sim
