#include "VarkelCore/src/state/set_plan.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/state/exchange_text.h"
#include "VarkelCore/src/state/fov_values.h"
#include "VarkelCore/src/state/variable_key.h"
#include "VarkelCore/src/values/fov_angles.h"
#include "VarkelCore/src/values/range_check.h"
#include "VarkelCore/src/values/str_parser.h"
#include "VarkelCore/src/values/value_text.h"
#include "VarkelCore/src/values/whole_number.h"

namespace varkel {

namespace {

using Bytes = std::vector<std::uint8_t>;

bool IsWritable(const ConfigParser& catalogue, const VarInfo& var) {
  if (var.set_cmd == kFovSetCommand && &var != FovChannel(catalogue)) return false;
  return !var.set_cmd.empty() && !var.get_cmd.empty() && var.permission != 0 &&
         MakeStrParser(var.var_type) != nullptr && var.var_type != "raw";
}

/// Only start angles can be written.
bool IsWritableAngle(const ConfigParser& catalogue, std::size_t angle) {
  return angle < kFovSectors && IsWritable(catalogue, *FovChannel(catalogue));
}

bool IsSameAngle(double a, double b) {
  constexpr double kTenthsPerDegree = 10;
  return std::lround(a * kTenthsPerDegree) == std::lround(b * kTenthsPerDegree);
}

bool IsOption(const VarInfo& var, const std::string& text) {
  if (var.options.empty()) return true;
  const auto number = WholeNumber(text);
  return number && std::any_of(var.options.begin(), var.options.end(),
                               [&](std::int32_t option) { return *number == option; });
}

/// A range with a bound of 0 counts as no range.
bool IsInRange(const VarInfo& var, double number) {
  return var.range_min == 0 || var.range_max == 0 || (var.range_min <= number && number <= var.range_max);
}

std::string Limits(const VarInfo& var) {
  if (var.options.empty()) {
    return "It has to be from " + std::to_string(var.range_min) + " to " + std::to_string(var.range_max) +
           ".";
  }
  std::string options;
  for (const std::int32_t option : var.options) {
    options += (options.empty() ? "" : ", ") + std::to_string(option);
  }
  return "It has to be one of " + options + ".";
}

/// The bytes from the codec; the error is a sentence.
tl::expected<Bytes, std::string> CodecBytes(const VarInfo& var, const std::string& text) {
  try {
    return MakeStrParser(var.var_type)->ParseToBytes(text, var.set_coefficient);
  } catch (const std::exception& error) {
    return tl::unexpected(std::string(error.what()));
  }
}

/// Edits the model temporarily for the range check; the destructor reverts the edits.
class Trial {
 public:
  explicit Trial(Model& model) : model_(model) { model_.values.Cancel(); }
  ~Trial() { model_.values.Cancel(); }
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

 private:
  Model& model_;
};

/// Makes a plan for one model, collecting all refusals.
class Planner {
 public:
  Planner(Model& model, Force force) : model_(model), force_(force) {}

  void Add(const WantedValue& wanted);
  void CheckCarriedFields();
  SetPlan Plan() const;

  std::vector<PlanRefusal> refusals;

 private:
  void Refuse(RefusalKind kind, const WantedValue& wanted, const std::string& text) {
    refusals.push_back({kind, wanted.key, text});
  }
  void AddAngle(std::size_t angle, const WantedValue& wanted);
  void CheckAngles(const PlannedField& field);
  bool Passes(VarInfo& var, const WantedValue& wanted, const std::string& text);
  bool HoldsAlready(const VarInfo& var, const std::string& text, const Bytes& bytes) const;

  Model& model_;
  const Force force_;
  std::unordered_set<std::string> seen_;
  std::vector<PlannedField> fields_;
};

/// The wanted raw bytes, if they match the wanted text and can be sent as they are; otherwise empty.
Bytes ExactBytes(const VarInfo& var, const WantedValue& wanted, const std::string& text) {
  Bytes raw = RawBytes(wanted.raw);
  if (raw.empty() || raw.size() != var.var_len || var.coefficient != var.set_coefficient) return {};
  const ValueText shown = BytesToText(var.var_type, raw, var.coefficient);
  return shown.fault == ValueFault::kNone && shown.text == text ? raw : Bytes();
}

void Planner::Add(const WantedValue& wanted) {
  if (const auto angle = FindFovAngle(*model_.catalogue, wanted.key)) return AddAngle(*angle, wanted);
  const auto found = FindVariable(*model_.catalogue, wanted.key);
  if (!found) return Refuse(RefusalKind::kUnknown, wanted, found.error());
  VarInfo& var = **found;
  if (!IsWritable(*model_.catalogue, var)) {
    return Refuse(RefusalKind::kNotWritable, wanted, "\"" + var.var_name + "\" can't be set.");
  }
  if (!seen_.insert(var.var_id).second) {
    return Refuse(RefusalKind::kDuplicate, wanted, "\"" + var.var_name + "\" is given twice.");
  }
  const std::string text(Trimmed(wanted.text));
  if (!Passes(var, wanted, text)) return;
  Bytes bytes = ExactBytes(var, wanted, text);
  if (HoldsAlready(var, text, bytes)) return;
  std::string old_text = model_.values.IsRead(var) ? model_.values.Show(var).text : std::string();
  fields_.push_back({&var, std::nullopt, std::move(old_text), text, std::move(bytes)});
}

void Planner::AddAngle(std::size_t angle, const WantedValue& wanted) {
  constexpr double kWholeTurn = 360;
  VarInfo& channel = *FovChannel(*model_.catalogue);
  const std::string name = FovAngleName(channel, angle);
  const std::string text(Trimmed(wanted.text));
  const std::string says = "\"" + name + "\" can't be \"" + text + "\". ";
  const auto number = WholeNumber(text);
  if (!IsWritableAngle(*model_.catalogue, angle)) {
    return Refuse(RefusalKind::kNotWritable, wanted, "\"" + name + "\" can't be set.");
  }
  if (!seen_.insert(name).second) {
    return Refuse(RefusalKind::kDuplicate, wanted, "\"" + name + "\" is given twice.");
  }
  if (!number) return Refuse(RefusalKind::kNotANumber, wanted, says + "It has to be a number.");
  if (*number < 0 || *number > kWholeTurn) {
    return Refuse(RefusalKind::kOutOfRange, wanted, says + "It has to be from 0 to 360.");
  }
  const bool is_read = angle < model_.values.FovSectorsRead();
  const float present = model_.values.ReportedFov().at(angle);
  if (is_read && IsSameAngle(present, *number)) return;
  fields_.push_back({&channel,
                     angle,
                     is_read ? AngleText(present) : std::string(),
                     AngleText(static_cast<float>(*number)),
                     {}});
}

bool Planner::Passes(VarInfo& var, const WantedValue& wanted, const std::string& text) {
  const std::string says = "\"" + var.var_name + "\" can't be \"" + text + "\". ";
  if (model_.values.IsRead(var) && model_.values.Show(var).text == text) return true;
  const auto number = WholeNumber(text);
  if (IsNumberType(var.var_type) && !number) {
    Refuse(RefusalKind::kNotANumber, wanted, says + "It has to be a number.");
    return false;
  }
  if (HoldsAlready(var, text, ExactBytes(var, wanted, text))) return true;
  if (!IsOption(var, text) || (number && !IsInRange(var, *number))) {
    Refuse(RefusalKind::kOutOfRange, wanted, says + Limits(var));
    return false;
  }
  const Trial trial(model_);
  model_.values.Edit(var, text);
  const RangeVerdict verdict = JudgePageValue(*model_.catalogue, var);
  if (verdict.fault == RangeFault::kOutOfRange) {
    Refuse(RefusalKind::kOutOfRange, wanted, says + Limits(var));
  } else if (verdict.fault == RangeFault::kNotANumber) {
    const bool does_not_fit = verdict.does_not_fit;
    Refuse(does_not_fit ? RefusalKind::kOutOfRange : RefusalKind::kNotANumber, wanted,
           says + verdict.detail + ".");
  } else if (!verdict.passes()) {
    Refuse(RefusalKind::kOutOfRange, wanted,
           says + (verdict.fault == RangeFault::kIpFormat ? "It has to be an address like 192.168.1.201."
                                                          : "It has to be six bytes separated by \":\"."));
  } else if (const auto bytes = CodecBytes(var, text); !bytes) {
    Refuse(RefusalKind::kOutOfRange, wanted, says + bytes.error());
  } else {
    return true;
  }
  return false;
}

/// Whether the sensor already reported this text, or the bytes that would be sent for it.
bool Planner::HoldsAlready(const VarInfo& var, const std::string& text, const Bytes& bytes) const {
  if (!model_.values.IsRead(var)) return false;
  const ValueStore::Shown shown = model_.values.Show(var);
  if (!bytes.empty() && !shown.raw.empty()) return bytes == shown.raw;
  if (shown.text == text) return true;
  const auto made = CodecBytes(var, text);
  if (!made) return false;
  if (var.coefficient == var.set_coefficient) return *made == shown.raw;
  const auto present = CodecBytes(var, shown.text);
  return present && *made == *present;
}

/// Checks that every other field of the commands is known and can be encoded.
void Planner::CheckCarriedFields() {
  std::unordered_set<std::string> commands;
  for (const PlannedField& field : fields_) {
    if (!commands.insert(field.var->set_cmd).second) continue;
    if (field.var->set_cmd == kFovSetCommand) {
      CheckAngles(field);
      continue;
    }
    for (const VarInfo* carried : model_.catalogue->set_cmd_map().at(field.var->set_cmd)) {
      const bool is_planned = std::any_of(fields_.begin(), fields_.end(),
                                          [&](const PlannedField& other) { return other.var == carried; });
      if (is_planned) continue;
      const std::string both =
          "\"" + field.var->var_name + "\" is sent together with \"" + carried->var_name + "\", ";
      if (carried->var_type == "raw") continue;
      if (MakeStrParser(carried->var_type) == nullptr) {
        refusals.push_back({RefusalKind::kNotWritable, field.var->var_id, both + "which can't be set."});
      } else if (!model_.values.IsRead(*carried) && force_ == Force::kNo) {
        refusals.push_back({RefusalKind::kNotRead, field.var->var_id, both + "which could not be read."});
      } else if (const auto bytes = CodecBytes(*carried, model_.values.Show(*carried).text); !bytes) {
        refusals.push_back({RefusalKind::kOutOfRange, field.var->var_id,
                            both + "whose present value can't be sent: " + bytes.error()});
      }
    }
  }
}

/// The channel and all five start angles are sent together.
void Planner::CheckAngles(const PlannedField& field) {
  const auto is_planned = [&](std::optional<std::size_t> angle) {
    return std::any_of(fields_.begin(), fields_.end(), [&](const PlannedField& other) {
      return other.var == field.var && other.angle == angle;
    });
  };
  const auto refuse = [&](const std::string& name) {
    refusals.push_back(
        {RefusalKind::kNotRead, field.id(),
         "\"" + field.name() + "\" is sent together with \"" + name + "\", which could not be read."});
  };
  if (force_ == Force::kYes) return;
  if (!is_planned(std::nullopt) && !model_.values.IsRead(*field.var)) refuse(field.var->var_name);
  for (std::size_t angle = model_.values.FovSectorsRead(); angle < kFovSectors; ++angle) {
    if (!is_planned(angle)) return refuse(FovAngleName(*field.var, angle));
  }
}

SetPlan Planner::Plan() const {
  SetPlan plan;
  for (const PlannedField& field : fields_) {
    const auto command =
        std::find_if(plan.commands.begin(), plan.commands.end(),
                     [&](const PlannedCommand& planned) { return planned.set_cmd == field.var->set_cmd; });
    if (command != plan.commands.end()) {
      command->fields.push_back(field);
    } else {
      plan.commands.push_back({field.var->set_cmd, {field}});
    }
  }
  std::stable_partition(plan.commands.begin(), plan.commands.end(),
                        [](const PlannedCommand& command) { return command.set_cmd != kAddressSetCommand; });
  return plan;
}

/// The table's variable for a state's value: by identifier and name, or by name alone if the identifier has
/// changed.
const VarInfo* VariableOf(const ConfigParser& catalogue, const StateValue& value) {
  const VarInfo* const by_id = catalogue.FindById(value.id);
  if (by_id != nullptr && by_id->var_name == value.name) return by_id;
  const auto by_name = FindVariable(catalogue, value.name);
  return by_name && (*by_name)->var_name == value.name ? *by_name : nullptr;
}

/// The table's angle for a state's value, found in the same way.
std::optional<std::size_t> AngleOf(const ConfigParser& catalogue, const StateValue& value) {
  const auto by_id = FindFovAngle(catalogue, value.id);
  if (by_id && value.name == FovAngleName(*FovChannel(catalogue), *by_id)) return by_id;
  return FindFovAngle(catalogue, value.name);
}

}  // namespace

std::string PlannedField::id() const {
  return angle ? FovAngleId(*var, *angle) : var->var_id;
}

std::string PlannedField::name() const {
  return angle ? FovAngleName(*var, *angle) : var->var_name;
}

std::string SettableKey(const ConfigParser& catalogue, const StateValue& value) {
  if (const auto angle = AngleOf(catalogue, value)) {
    return IsWritableAngle(catalogue, *angle) ? FovAngleId(*FovChannel(catalogue), *angle) : std::string();
  }
  const VarInfo* const var = VariableOf(catalogue, value);
  return var != nullptr && IsWritable(catalogue, *var) ? var->var_id : std::string();
}

tl::expected<SetPlan, std::vector<PlanRefusal>> MakeSetPlan(Model& model, std::span<const WantedValue> wanted,
                                                            Force force) {
  Planner planner(model, force);
  for (const WantedValue& value : wanted) planner.Add(value);
  if (planner.refusals.empty()) planner.CheckCarriedFields();
  if (!planner.refusals.empty()) return tl::unexpected(std::move(planner.refusals));
  return planner.Plan();
}

tl::expected<std::vector<WantedValue>, std::vector<PlanRefusal>> WantedFromState(
    const Model& model, const SensorState& state, Force force,
    const std::function<bool(const StateValue&)>& takes) {
  if (state.model != model.name && force == Force::kNo) {
    return tl::unexpected(std::vector<PlanRefusal>{
        {RefusalKind::kOtherModel, state.model,
         "The state is from the model " + state.model + ", but the sensor is a " + model.name + "."}});
  }
  std::vector<WantedValue> wanted;
  std::vector<PlanRefusal> refusals;
  for (const StateValue& value : state.values) {
    if (takes && !takes(value)) continue;
    const bool is_known =
        AngleOf(*model.catalogue, value).has_value() || VariableOf(*model.catalogue, value) != nullptr;
    if (is_known) {
      std::string key = SettableKey(*model.catalogue, value);
      if (!key.empty()) wanted.push_back({std::move(key), value.text, value.raw});
    } else if (force == Force::kNo) {
      refusals.push_back(
          {RefusalKind::kUnknown, value.id, "There is no variable " + value.id + " \"" + value.name + "\"."});
    }
  }
  if (!refusals.empty()) return tl::unexpected(std::move(refusals));
  return wanted;
}

}  // namespace varkel
