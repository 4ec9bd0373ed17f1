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

/// A value that the sensor shall hold.
struct WantedValue {
  std::string key;   ///< identifier or name
  std::string text;  ///< as shown
  std::string raw;   ///< the bytes of that text on the sensor that it was read from, "01 a0"; may be empty
};

/// A change of one variable.
struct PlannedField {
  VarInfo* var = nullptr;              ///< for an angle of the field of view its channel
  std::optional<std::size_t> angle{};  ///< which one (FovAngles)
  std::string old_text;
  std::string new_text;
  std::vector<std::uint8_t> bytes;  ///< go out in place of the codec's, which rounds; empty: the codec's

  std::string id() const;
  std::string name() const;
};

/// One set command: it carries more fields than it changes, and they go out with the sensor's present values.
struct PlannedCommand {
  std::string set_cmd;
  std::vector<PlannedField> fields;
};

struct SetPlan {
  std::vector<PlannedCommand> commands;  ///< in the order in which they go out, the address command last
  bool is_empty() const { return commands.empty(); }
};

enum class RefusalKind {
  kUnknown,      ///< no such variable, or several
  kNotWritable,  ///< the model's table does not let it be set
  kNotANumber,
  kOutOfRange,  ///< out of its range or type, or none of its options
  kNotRead,     ///< a field of its command is not known, so the command would write a guess over it
  kOtherModel,
  kTwice,  ///< two values for one variable
};

struct PlanRefusal {
  RefusalKind kind = RefusalKind::kUnknown;
  std::string key;
  std::string text;  ///< a sentence
};

/// Whether doubts refuse a plan.
enum class Force { kNo, kYes };

/// The set commands that give the sensor the wanted values. The model's values are what the sensor holds
/// (read them before): what it holds already is not written. All refusals are gathered, and nothing is
/// planned when there is one. With force a command may write fields that could not be read. The model's
/// values stay as they are.
tl::expected<SetPlan, std::vector<PlanRefusal>> MakeSetPlan(Model& model, std::span<const WantedValue> wanted,
                                                            Force force = Force::kNo);

/// The key under which a state's value can be planned; empty for one that the model lacks or can't set.
std::string SettableKey(const ConfigParser& catalogue, const StateValue& value);

/// What a state wants of the variables that can be written; `takes` chooses among them. A state of another
/// model is refused, as is one with variables that the model lacks; with force both count as if they were not
/// there.
tl::expected<std::vector<WantedValue>, std::vector<PlanRefusal>> WantedFromState(
    const Model& model, const SensorState& state, Force force = Force::kNo,
    const std::function<bool(const StateValue&)>& takes = {});

}  // namespace varkel
