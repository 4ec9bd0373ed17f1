#include "VarkelCore/src/values/value_store.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

constexpr char kSerialNumberName[] = "SN";
constexpr char kUnknownSerialNumber[] = "xxxxxxxx";
constexpr std::size_t kAnglesResetOnDisconnect = 4;

/// Whether two texts are the same number within the precision of reading and writing with different scales.
bool AreSameNumber(const VarInfo& var, const std::string& a, const std::string& b) {
  constexpr double kShownStep = 0.005;  // texts have two decimals
  try {
    const double difference = std::abs(quarn::lidar::TextToDouble(a) - quarn::lidar::TextToDouble(b));
    const float step = std::max(std::abs(var.coefficient), std::abs(var.set_coefficient));
    return difference < static_cast<double>(step) + kShownStep;
  } catch (const std::exception&) {
    return false;
  }
}

/// A field that is read and written with the same scale is compared by bytes ("1.3" reads back as "1.30").
bool IsReadBackEqual(const SentField& sent, const Reading& reading) {
  if (sent.text == reading.text) return true;
  const VarInfo& var = *reading.var;
  if (var.coefficient == var.set_coefficient) return !reading.raw.empty() && sent.bytes == reading.raw;
  return AreSameNumber(var, sent.text, reading.text);
}

/// "0.0 45.5 90.0 0.0 0.0"
std::string StartAngles(const FovAngles& angles) {
  std::string text;
  for (std::size_t i = 0; i < kFovSectors; ++i) {
    text += (i == 0 ? "" : " ") + AngleText(angles.at(i));
  }
  return text;
}

}  // namespace

const char* OriginName(ValueOrigin origin) {
  switch (origin) {
    case ValueOrigin::kDefault:
      return "default";
    case ValueOrigin::kRead:
      return "read";
    case ValueOrigin::kEdited:
      return "edited";
    case ValueOrigin::kSent:
      return "sent";
    case ValueOrigin::kVerified:
      return "verified";
    case ValueOrigin::kDiffers:
      return "differs";
  }
  return "";
}

ValueStore::ValueStore(std::shared_ptr<ConfigParser> catalogue, Listener listener)
    : catalogue_(std::move(catalogue)), listener_(std::move(listener)) {}

template <typename Change>
void ValueStore::Apply(const Change& change) {
  bool is_first = false;
  {
    const auto lock = catalogue_->LockValues();
    is_first = changed_.empty();
    ++moment_;
    change();
    is_first = is_first && !changed_.empty();
  }
  if (is_first && listener_) listener_();
}

void ValueStore::Read(std::vector<Reading> readings, Moment asked, Time time) {
  Apply([&] {
    if (asked < sensor_since_) return;
    for (Reading& reading : readings) {
      if (StateOf(*reading.var).sent_at <= asked) Store(reading, time);
    }
  });
}

void ValueStore::Store(Reading& reading, Time time) {
  VarInfo& var = *reading.var;
  State& state = Touch(var);
  if (state.sent && state.origin != ValueOrigin::kVerified) {
    const bool was_kept = state.origin == ValueOrigin::kRead;  // sent with its reported bytes
    const bool equal = IsReadBackEqual(*state.sent, reading);
    state.origin = !equal ? ValueOrigin::kDiffers : was_kept ? ValueOrigin::kRead : ValueOrigin::kVerified;
  } else if (!state.sent || reading.text != state.reported) {
    state.origin = ValueOrigin::kRead;
  }
  state.read_at = moment_;
  state.read_time = time;
  state.raw = std::move(reading.raw);
  state.reported = std::move(reading.text);
  if (!state.edited) var.current_val = state.reported;
}

void ValueStore::ReadFov(const FovAngles& angles, Moment asked, std::size_t sectors) {
  Apply([&] {
    if (asked < sensor_since_ || asked < fov_sent_at_) return;
    reported_fov_ = angles;
    fov_sectors_ = sectors;
    fov_read_at_ = moment_;
    if (!fov_edited_) fov_ = angles;
    TouchFov();
  });
}

void ValueStore::Edit(VarInfo& var, const std::string& text) {
  Apply([&] {
    if (var.current_val == text) return;
    State& state = Touch(var);
    var.current_val = text;
    state.refusal.reset();
    if (std::exchange(state.edited, true)) return;
    if (!var.set_cmd.empty()) ++pending_[var.set_cmd];
  });
}

void ValueStore::EditFov(std::size_t index, float degrees) {
  Apply([&] {
    fov_.at(index) = degrees;
    fov_edited_ = true;
    TouchFov();
  });
}

void ValueStore::TakeBack(VarInfo& var) {
  Apply([&] {
    State& state = StateOf(var);
    if (!state.edited) return;
    var.current_val = state.reported;
    ForgetEdit(var, state);
  });
}

void ValueStore::TakeBackFov(std::size_t index) {
  Apply([&] {
    fov_.at(index) = reported_fov_.at(index);
    fov_edited_ = fov_edited_ && fov_ != reported_fov_;
    TouchFov();
  });
}

bool ValueStore::Cancel() {
  bool fov_changed = false;
  Apply([&] { fov_changed = CancelAll(); });
  return fov_changed;
}

bool ValueStore::CancelAll() {
  for (auto& [var, state] : states_) {
    if (!state.edited) continue;
    VarInfo& edited = *catalogue_->FindById(var->var_id);
    edited.current_val = state.reported;
    ForgetEdit(edited, state);
  }
  if (!std::exchange(fov_edited_, false)) return false;
  fov_ = reported_fov_;
  TouchFov();
  return true;
}

void ValueStore::ForgetEdit(VarInfo& var, State& state) {
  state.edited = false;
  state.refusal.reset();
  Touch(var);
  if (const auto pending = pending_.find(var.set_cmd); pending != pending_.end() && --pending->second == 0) {
    pending_.erase(pending);
  }
}

void ValueStore::Sent(const SentCommand& command, Moment asked) {
  Apply([&] {
    if (asked < sensor_since_) return;
    for (const SentField& field : command.fields) {
      State& state = Touch(*field.var);
      const bool kept = !state.edited && !state.raw.empty() && state.raw == field.bytes;
      if (!kept) state.raw.clear();
      state.origin = kept ? ValueOrigin::kRead : ValueOrigin::kSent;
      state.sent = field;
      state.sent_at = moment_;
      state.reported = field.text;
      // Another text is shown only if the edit was cancelled after it had been sent.
      if (!state.edited) field.var->current_val = field.text;
    }
    if (command.fov) {
      std::copy_n(command.fov->begin(), kFovSectors, reported_fov_.begin());
      sent_fov_ = command.fov;
      fov_sent_at_ = moment_;
      TouchFov();
    }
  });
}

void ValueStore::Saved(std::span<const SentCommand> commands) {
  Apply([&] {
    for (const SentCommand& command : commands) {
      for (const SentField& field : command.fields) {
        State& state = StateOf(*field.var);
        if (state.edited && field.var->current_val == field.text) ForgetEdit(*field.var, state);
      }
      if (command.fov && fov_ == *command.fov) {
        fov_edited_ = false;
        TouchFov();
      }
    }
  });
}

void ValueStore::Refused(const std::string& set_cmd, int code) {
  Apply([&] {
    const auto carried = catalogue_->set_cmd_map().find(set_cmd);
    if (carried == catalogue_->set_cmd_map().end()) return;
    for (const VarInfo* var : carried->second) {
      if (StateOf(*var).edited) Touch(*var).refusal = code;
    }
  });
}

void ValueStore::SensorChanged() {
  Apply([&] { ForgetSensor(); });
}

void ValueStore::ForgetSensor() {
  for (auto& [var, state] : states_) {
    if (IsReadLocked(state) || state.sent) Touch(*var).sent.reset();
  }
  TouchFov();
  sent_fov_.reset();
  sensor_since_ = moment_;
}

void ValueStore::Disconnected() {
  Apply([&] {
    CancelAll();
    ForgetSensor();
    std::fill_n(reported_fov_.begin(), kAnglesResetOnDisconnect, 0.0F);
    fov_ = reported_fov_;
    TouchFov();
  });
}

void ValueStore::SerialNumberUnknown() {
  Apply([&] {
    for (const auto& [var_id, var] : catalogue_->var_map()) {
      if (var->var_name != kSerialNumberName) continue;
      State& state = Touch(*var);
      state.reported = kUnknownSerialNumber;
      state.origin = ValueOrigin::kDefault;
      state.raw.clear();
      state.read_time.reset();
      state.read_at = 0;
      var->current_val = kUnknownSerialNumber;
      if (state.edited) ForgetEdit(*var, state);
    }
  });
}

ValueStore::Moment ValueStore::Now() const {
  const auto lock = catalogue_->LockValues();
  return moment_;
}

bool ValueStore::IsRead(const VarInfo& var, Moment moment) const {
  const auto lock = catalogue_->LockValues();
  const State* state = FindState(var);
  return state != nullptr && IsReadLocked(*state) && state->read_at > moment;
}

bool ValueStore::IsFovRead() const {
  const auto lock = catalogue_->LockValues();
  return fov_read_at_ > sensor_since_;
}

std::size_t ValueStore::FovSectorsRead(Moment moment) const {
  const auto lock = catalogue_->LockValues();
  return fov_read_at_ > sensor_since_ && fov_read_at_ > moment ? fov_sectors_ : 0;
}

bool ValueStore::IsEdited(const VarInfo& var) const {
  const auto lock = catalogue_->LockValues();
  const State* state = FindState(var);
  return state != nullptr && state->edited;
}

std::vector<const VarInfo*> ValueStore::EditedVars() const {
  const auto lock = catalogue_->LockValues();
  std::vector<const VarInfo*> edited;
  for (const auto& [var, state] : states_) {
    if (state.edited) edited.push_back(var);
  }
  return edited;
}

bool ValueStore::IsFovEdited() const {
  const auto lock = catalogue_->LockValues();
  return fov_edited_;
}

bool ValueStore::IsPending(const std::string& set_cmd) const {
  const auto lock = catalogue_->LockValues();
  return IsPendingLocked(set_cmd);
}

bool ValueStore::IsPendingLocked(const std::string& set_cmd) const {
  return pending_.count(set_cmd) != 0 || (fov_edited_ && set_cmd == kFovSetCommand);
}

std::size_t ValueStore::pending_count() const {
  const auto lock = catalogue_->LockValues();
  const bool fov_alone = fov_edited_ && pending_.count(kFovSetCommand) == 0;
  return pending_.size() + (fov_alone ? 1 : 0);
}

FovAngles ValueStore::Fov() const {
  const auto lock = catalogue_->LockValues();
  return fov_;
}

FovAngles ValueStore::ReportedFov() const {
  const auto lock = catalogue_->LockValues();
  return reported_fov_;
}

ValueStore::Field ValueStore::FieldToSend(const VarInfo& var) const {
  const auto lock = catalogue_->LockValues();
  const State* state = FindState(var);
  if (state == nullptr || state->edited) return {var.current_val, {}};
  return {var.current_val, state->raw};
}

ValueStore::Shown ValueStore::Show(const VarInfo& var) const {
  const auto lock = catalogue_->LockValues();
  Shown shown;
  shown.text = shown.held = var.current_val;
  shown.set_start_pos = var.set_start_pos;
  shown.length = var.var_len;
  if (const State* state = FindState(var)) {
    shown.origin = state->edited ? ValueOrigin::kEdited : state->origin;
    shown.edited = state->edited;
    if (state->edited) shown.held = state->reported;
    shown.refusal = state->refusal;
    shown.read_time = state->read_time;
    shown.stale = state->read_time && !IsReadLocked(*state);
    shown.raw = state->raw;
  }
  if (var.component_type == kSwitch && var.switch_var != nullptr) {
    shown.switch_text = var.switch_var->current_val;
    const State* of_switch = FindState(*var.switch_var);
    shown.edited |= of_switch != nullptr && of_switch->edited;
  }
  if (var.component_type == kFieldOfView) shown.edited |= IsPendingLocked(var.set_cmd);
  return shown;
}

std::optional<ValueStore::Verification> ValueStore::Verify(const VarInfo& var) const {
  const auto lock = catalogue_->LockValues();
  const State* state = FindState(var);
  if (state == nullptr || !state->sent) return std::nullopt;
  Verification verification{state->sent->text, std::nullopt, false};
  if (state->read_at > state->sent_at) {
    verification.read_back = state->reported;
    verification.equal = state->origin != ValueOrigin::kDiffers;
  }
  return verification;
}

std::optional<ValueStore::Verification> ValueStore::VerifyFov() const {
  const auto lock = catalogue_->LockValues();
  if (!sent_fov_) return std::nullopt;
  Verification verification{StartAngles(*sent_fov_), std::nullopt, false};
  if (fov_read_at_ > fov_sent_at_) {
    verification.read_back = StartAngles(reported_fov_);
    verification.equal = verification.read_back == verification.sent;
  }
  return verification;
}

std::vector<const VarInfo*> ValueStore::TakeChanges() {
  const auto lock = catalogue_->LockValues();
  for (const VarInfo* var : changed_) states_.at(var).changed = false;
  return std::exchange(changed_, {});
}

ValueStore::State& ValueStore::StateOf(const VarInfo& var) {
  const auto [state, is_new] = states_.try_emplace(&var);
  if (is_new) state->second.reported = var.current_val;
  return state->second;
}

const ValueStore::State* ValueStore::FindState(const VarInfo& var) const {
  const auto found = states_.find(&var);
  return found == states_.end() ? nullptr : &found->second;
}

ValueStore::State& ValueStore::Touch(const VarInfo& var) {
  State& state = StateOf(var);
  if (!std::exchange(state.changed, true)) changed_.push_back(&var);
  return state;
}

/// The angles are shown in the rows of the variables that are sent with them.
void ValueStore::TouchFov() {
  const auto carried = catalogue_->set_cmd_map().find(kFovSetCommand);
  if (carried == catalogue_->set_cmd_map().end()) return;
  for (const VarInfo* var : carried->second) Touch(*var);
}

}  // namespace varkel
