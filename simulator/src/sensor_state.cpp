#include "simulator/src/sensor_state.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/values/value_text.h"
#include "simulator/src/field_bytes.h"
#include "simulator/src/raw_number.h"

namespace varkel::sim {
namespace {

/// A longer field is a fault in the table: no sensor has such values.
constexpr std::uint32_t kLongestField = 4096;

/// Its field is as long as the payload.
constexpr char kKeyOfAnyLength[] = "Shared Secret Key";

bool HasAnyLength(const VarInfo& var) {
  return var.var_name == kKeyOfAnyLength;
}

[[noreturn]] void RefuseTable(const ConfigParser& model, const VarInfo& var, const std::string& reason) {
  throw std::runtime_error("The table " + model.path() + " can't be simulated: variable " + var.var_id +
                           " \"" + var.var_name + "\": " + reason);
}

std::vector<std::uint8_t> DefaultBytes(const ConfigParser& model, const VarInfo& var) {
  const std::size_t length = HasAnyLength(var) ? var.default_val.size() : var.var_len;
  if (length > kLongestField) {
    RefuseTable(model, var,
                "its field has " + std::to_string(length) + " bytes, the most is " +
                    std::to_string(kLongestField) + ".");
  }
  try {
    return FieldBytes(var.var_type, var.default_val, length, var.coefficient);
  } catch (const std::invalid_argument& error) {
    RefuseTable(model, var, std::string("its default value ") + error.what() + ".");
  }
}

void Clamp(const VarInfo& var, std::int64_t largest, std::vector<std::uint8_t>& bytes) {
  const auto type = NumberTypeOf(var.var_type);
  if (!type || type->is_float) return;
  const std::uint64_t value = IntegerOf(bytes, type->is_signed);
  const bool beyond =
      type->is_signed ? static_cast<std::int64_t>(value) > largest : std::cmp_greater(value, largest);
  if (beyond) bytes = IntegerBytes(static_cast<std::uint64_t>(largest), type->is_signed, bytes.size());
}

}  // namespace

SensorState::SensorState(std::shared_ptr<const ConfigParser> model, Clock clock)
    : model_(std::move(model)), clock_(std::move(clock)) {
  SetDefaultsLocked();
}

void SensorState::SetDefaultsLocked() {
  std::size_t ordinal = 0;
  for (const auto& [id, var] : model_->var_map()) {
    values_[var.get()] = {DefaultBytes(*model_, *var), LiveKindOf(*var), ordinal++};
  }
}

void SensorState::RestoreDefaults() {
  const std::lock_guard<std::mutex> lock(mutex_);
  SetDefaultsLocked();
}

void SensorState::PowerUp() {
  const std::lock_guard<std::mutex> lock(mutex_);
  power_up_ = clock_();
}

std::vector<std::uint8_t> SensorState::Read(const std::string& get_cmd) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::uint8_t> payload(IsExtendedCommand(get_cmd) ? kExtendedCodeSize : 0);
  const auto found = model_->get_cmd_map().find(get_cmd);
  if (found == model_->get_cmd_map().end()) return payload;
  for (const VarInfo* var : found->second) {
    const std::vector<std::uint8_t> field = BytesNow(*var);
    payload.resize(std::max(payload.size(), var->get_start_pos + field.size()));
    std::copy(field.begin(), field.end(), payload.begin() + var->get_start_pos);
  }
  return payload;
}

std::optional<std::size_t> SensorState::SetSize(const std::string& set_cmd) const {
  std::size_t size = 0;
  const auto found = model_->set_cmd_map().find(set_cmd);
  if (found == model_->set_cmd_map().end()) return size;
  for (const VarInfo* var : found->second) {
    if (HasAnyLength(*var)) return std::nullopt;
    size += var->var_len;
  }
  return size;
}

bool SensorState::Write(const std::string& set_cmd, std::span<const std::uint8_t> payload,
                        std::optional<std::int64_t> clamp) {
  const auto size = SetSize(set_cmd);
  const auto found = model_->set_cmd_map().find(set_cmd);
  if (found == model_->set_cmd_map().end() || (size && *size != payload.size())) return false;
  const std::lock_guard<std::mutex> lock(mutex_);
  for (const VarInfo* var : found->second) {
    if (!size && !HasAnyLength(*var)) continue;  // the key fills the whole payload
    const auto field = size ? payload.subspan(var->set_start_pos, var->var_len) : payload;
    std::vector<std::uint8_t>& bytes = values_.at(var).bytes;
    bytes.assign(field.begin(), field.end());
    if (clamp) Clamp(*var, *clamp, bytes);
  }
  return true;
}

std::string SensorState::ValueText(const std::string& var_name) const {
  const VarInfo& var = Find(var_name);
  const std::lock_guard<std::mutex> lock(mutex_);
  return BytesToText(var.var_type, BytesNow(var), var.coefficient).text;
}

void SensorState::SetValue(const std::string& var_name, const std::string& text) {
  const VarInfo& var = Find(var_name);
  const std::size_t length = HasAnyLength(var) ? text.size() : var.var_len;
  std::vector<std::uint8_t> bytes = FieldBytes(var.var_type, text, length, var.coefficient);
  const std::lock_guard<std::mutex> lock(mutex_);
  Value& value = values_.at(&var);
  value.bytes = std::move(bytes);
  value.live = LiveKind::kFixed;
}

const VarInfo& SensorState::Find(const std::string& var_name) const {
  const VarInfo* const var = model_->FindByName(var_name);
  if (var == nullptr) {
    throw std::out_of_range("The table " + model_->path() + " has no variable \"" + var_name + "\".");
  }
  return *var;
}

std::vector<std::uint8_t> SensorState::BytesNow(const VarInfo& var) const {
  const Value& value = values_.at(&var);
  if (value.live == LiveKind::kFixed) return value.bytes;
  return LiveBytes(value.live, var, value.bytes, clock_() - power_up_, value.ordinal);
}

}  // namespace varkel::sim
