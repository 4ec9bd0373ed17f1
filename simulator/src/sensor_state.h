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

/// The bytes of every variable of a model. Builds replies and stores set payloads according to the model's
/// table. All operations are thread-safe.
class SensorState {
 public:
  /// Every variable starts with its default. Raises std::runtime_error with a sentence that names table and
  /// variable if a default can't be encoded or a field is absurdly long.
  SensorState(std::shared_ptr<const ConfigParser> model, Clock clock);

  /// The reply payload of one of the table's get commands. For a four-byte command, four zero bytes come
  /// first, in place of the code.
  std::vector<std::uint8_t> Read(const std::string& get_cmd) const;

  /// The payload size of the set command; nullopt if any length is allowed.
  std::optional<std::size_t> SetSize(const std::string& set_cmd) const;
  /// Stores a set payload, without any four-byte code; whole numbers above `clamp` are stored as `clamp`.
  /// Returns false and stores nothing if the size is wrong.
  bool Write(const std::string& set_cmd, std::span<const std::uint8_t> payload,
             std::optional<std::int64_t> clamp = std::nullopt);

  /// Restores all defaults; live variables change by themselves again.
  void RestoreDefaults();
  /// Running times and counters start again from their values at power-up.
  void PowerUp();

  /// The variable's value as the user interface shows it. Raises std::out_of_range for an unknown name.
  std::string ValueText(const std::string& var_name) const;
  /// Raises std::out_of_range for an unknown name, std::invalid_argument for a text that doesn't fit.
  /// From then on the variable no longer changes by itself.
  void SetValue(const std::string& var_name, const std::string& text);

 private:
  struct Value {
    std::vector<std::uint8_t> bytes;  ///< at power-up, if it changes by itself
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
  std::map<const VarInfo*, Value> values_;  // the map is constant; mutex_ guards its values
};

}  // namespace varkel::sim
