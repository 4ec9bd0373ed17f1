#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <tl/expected.hpp>
#include <vector>

#include "VarkelCore/src/state/sensor_state.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// A value to give to the sensor.
struct WantedValue {
  std::string key;   ///< identifier or name
  std::string text;  ///< as shown
  std::string raw;   ///< the bytes of that text on the sensor that it was read from, "01 a0"; may be empty
};

/// A change of one variable.
struct PlannedField {
  VarInfo* var = nullptr;              ///< for an angle of the field of view, its channel
  std::optional<std::size_t> angle{};  ///< which one (FovAngles)
  std::string old_text;
  std::string new_text;
  std::vector<std::uint8_t> bytes;  ///< sent instead of the codec's, which rounds; empty: use the codec

  std::string id() const;
  std::string name() const;
};

/// One set command. Its other fields, which do not change, are sent with the sensor's present values.
struct PlannedCommand {
  std::string set_cmd;
  std::vector<PlannedField> fields;
};

struct SetPlan {
  std::vector<PlannedCommand> commands;  ///< in sending order, the address command last
  bool is_empty() const { return commands.empty(); }
};

enum class RefusalKind {
  kUnknown,      ///< no such variable, or several
  kNotWritable,  ///< the model's table does not allow it to be set
  kNotANumber,
  kOutOfRange,  ///< out of its range or type, or none of its options
  kNotRead,     ///< another field of its command is unknown, so the command would overwrite it with a guess
  kOtherModel,
  kDuplicate,  ///< two values for one variable
};

struct PlanRefusal {
  RefusalKind kind = RefusalKind::kUnknown;
  std::string key;
  std::string text;  ///< a sentence
};

/// kYes plans even in doubtful cases.
enum class Force { kNo, kYes };

/// Plans the set commands that give the sensor the wanted values. The model must hold the sensor's present
/// values; values that the sensor already has are not written. All refusals are collected, and if there is
/// any, nothing is planned. With force a command may write fields that could not be read. Does not change the
/// model's values.
tl::expected<SetPlan, std::vector<PlanRefusal>> MakeSetPlan(Model& model, std::span<const WantedValue> wanted,
                                                            Force force = Force::kNo);

/// The key of the variable that a state's value can be written to; empty if the model lacks it or can't set
/// it.
std::string SettableKey(const ConfigParser& catalogue, const StateValue& value);

/// The values of a state for the writable variables; `takes` selects among them. A state of another model is
/// refused, as is one with variables that the model lacks; with force the model is not checked and such
/// variables are skipped.
tl::expected<std::vector<WantedValue>, std::vector<PlanRefusal>> WantedFromState(
    const Model& model, const SensorState& state, Force force = Force::kNo,
    const std::function<bool(const StateValue&)>& takes = {});

}  // namespace varkel
