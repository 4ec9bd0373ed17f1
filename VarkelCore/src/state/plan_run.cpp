#include "VarkelCore/src/state/plan_run.h"

#include <algorithm>
#include <exception>
#include <span>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/session/ktc_connect.h"
#include "VarkelCore/src/state/exchange_text.h"
#include "VarkelCore/src/state/fov_values.h"
#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

using quarn::lidar::KtcClient;
using Client = std::shared_ptr<KtcClient>;

/// Replaces the bytes that the codecs made from rounded texts by the exact bytes of the planned fields.
void UseExactBytes(ConfigParser& catalogue, const PlannedCommand& planned, SetRequest& request) {
  for (const PlannedField& field : planned.fields) {
    std::pair<std::uint32_t, std::uint32_t> place;
    const auto length = static_cast<std::uint32_t>(request.payload.size());
    if (field.bytes.empty() ||
        !catalogue.GetVarPosOffset(planned.set_cmd, field.var->var_id, length, place)) {
      continue;
    }
    if (place.second != field.bytes.size() || place.first > length || place.second > length - place.first) {
      continue;
    }
    std::copy(field.bytes.begin(), field.bytes.end(), request.payload.begin() + place.first);
    for (SentField& sent : request.command.fields) {
      if (sent.var == field.var) sent.bytes = field.bytes;
    }
  }
}

/// The command of the field of view: the channel, then all five start angles.
SetRequest MakeFovRequest(Model& model) {
  VarInfo& channel = *FovChannel(*model.catalogue);
  const std::string text = model.catalogue->CurrentValue(channel);
  const auto byte = static_cast<std::uint8_t>(quarn::lidar::TextToInt(text));
  const FovAngles angles = model.values.Fov();
  quarn::lidar::FovAngles starts{};
  std::copy_n(angles.begin(), kFovSectors, starts.begin());
  return {{kFovSetCommand, {{&channel, text, {byte}}}, angles}, quarn::lidar::EncodeChannelFov(byte, starts)};
}

/// One run of one plan.
class Writing {
 public:
  Writing(Model& model, Client client, const StateReader& reader, const RunOptions& options,
          const std::stop_token& stop)
      : model_(model), client_(std::move(client)), reader_(reader), options_(options), stop_(stop) {}

  RunReport Of(const SetPlan& plan);

 private:
  using Outcomes = std::span<ChangeOutcome>;

  void Perform(const PlannedCommand& command, Outcomes outcomes);
  SetRequest Prepare(const PlannedCommand& command);
  void Follow(const PlannedCommand& command, const SensorAddress& address, std::int32_t code,
              Outcomes outcomes);
  void Fail(std::int32_t code, Outcomes outcomes);
  bool ReadBack(const PlannedCommand& command, KtcClient& client, Outcomes outcomes);
  void Judge(const PlannedField& field, ValueStore::Moment since, ChangeOutcome& outcome) const;
  void End(RunEnd end, std::string detail) {
    report_.end = end;
    report_.detail = std::move(detail);
  }
  bool EndIfStopped();

  Model& model_;
  const Client client_;
  const StateReader& reader_;
  const RunOptions& options_;
  const std::stop_token stop_;
  RunReport report_;
};

RunReport Writing::Of(const SetPlan& plan) {
  for (const PlannedCommand& command : plan.commands) {
    for (const PlannedField& field : command.fields) report_.changes.push_back(NotSent(field));
  }
  model_.values.Cancel();
  std::size_t first = 0;
  std::size_t done = 0;
  for (const PlannedCommand& command : plan.commands) {
    if (options_.progress) options_.progress(done++, plan.commands.size());
    if (report_.end != RunEnd::kComplete || EndIfStopped()) break;
    Perform(command, Outcomes(report_.changes).subspan(first, command.fields.size()));
    first += command.fields.size();
  }
  model_.values.Cancel();
  if (options_.progress) options_.progress(plan.commands.size(), plan.commands.size());
  return std::move(report_);
}

bool Writing::EndIfStopped() {
  if (!stop_.stop_requested()) return false;
  End(RunEnd::kStopped, "Stopped: values not marked as sent were not written.");
  return true;
}

SetRequest Writing::Prepare(const PlannedCommand& command) {
  for (const PlannedField& field : command.fields) {
    if (field.angle) {
      model_.values.EditFov(*field.angle, static_cast<float>(quarn::lidar::TextToDouble(field.new_text)));
    } else {
      model_.values.Edit(*field.var, field.new_text);
    }
  }
  if (command.set_cmd == kFovSetCommand) return MakeFovRequest(model_);
  SetRequest request = MakeSetRequest(model_, command.set_cmd);
  UseExactBytes(*model_.catalogue, command, request);
  return request;
}

void Writing::Perform(const PlannedCommand& command, Outcomes outcomes) {
  std::int32_t code = 0;
  try {
    const Command wire = ParseCommandText(command.set_cmd);
    const SetRequest request = Prepare(command);
    const ValueStore::Moment asked = model_.values.Now();
    const ExchangeResult result = QueryTableCommand(*client_, wire, RequestPayload(wire, request.payload));
    code = result ? 0 : result.error();
    if (code <= 0 && code != KtcClient::kNotSent) {  // the sensor may have executed it
      const SentCommand sent[] = {request.command};
      model_.values.Sent(request.command, asked);
      model_.values.Saved(sent);
    } else {
      model_.values.Cancel();
    }
  } catch (const std::exception& error) {
    model_.values.Cancel();
    return End(RunEnd::kEndedByRefusal, command.set_cmd + " can't be sent: " + error.what() + ".");
  }
  const auto address = AddressAfter(*model_.catalogue, command, options_.move.present);
  const bool may_have_moved = address && (code == 0 || code == KtcClient::kNoHeader);
  if (may_have_moved && options_.move.connect) return Follow(command, *address, code, outcomes);
  if (code != 0) {
    Fail(code, outcomes);
    if (code > 0 || code == KtcClient::kNotSent || report_.end != RunEnd::kComplete) return;
  }
  if (!ReadBack(command, *client_, outcomes) && !EndIfStopped() && !AnswersKtc(*client_)) {
    End(RunEnd::kConnectionLost, "The sensor no longer answers.");
  }
}

/// The command was refused, or its outcome is unknown.
void Writing::Fail(std::int32_t code, Outcomes outcomes) {
  for (ChangeOutcome& outcome : outcomes) {
    outcome.code = code;
    if (code > 0) outcome.verdict = Verdict::kRefused;
    if (code < 0 && code != KtcClient::kNotSent) outcome.verdict = Verdict::kUnconfirmed;
  }
  if (code > 0) {
    if (options_.stop_on_refusal) End(RunEnd::kEndedByRefusal, "Ended after a refusal.");
  } else if (!EndIfStopped() && !AnswersKtc(*client_) && !EndIfStopped()) {
    End(RunEnd::kConnectionLost, "The connection was lost: " + ExchangeCodeText(code) + ".");
  }
}

void Writing::Follow(const PlannedCommand& command, const SensorAddress& address, std::int32_t code,
                     Outcomes outcomes) {
  for (ChangeOutcome& outcome : outcomes) outcome.verdict = Verdict::kUnconfirmed;
  if (const Client moved = FollowTo(address, options_.move, stop_)) {
    ReadBack(command, *moved, outcomes);
    report_.moved_to = address;
    return;
  }
  if (EndIfStopped()) return;
  std::string detail = NotReachedText(options_.move.present, address, options_.move.timeout);
  if (ReadBack(command, *client_, outcomes)) {
    detail += " It still answers at " + AddressText(options_.move.present) +
              ": a restart may move it to the new address.";
  }
  for (ChangeOutcome& outcome : outcomes) outcome.code = code;
  End(RunEnd::kNotReached, std::move(detail));
}

/// Reads back what the command wrote and sets the verdicts. False if nothing could be read.
bool Writing::ReadBack(const PlannedCommand& command, KtcClient& client, Outcomes outcomes) {
  for (ChangeOutcome& outcome : outcomes) outcome.verdict = Verdict::kUnconfirmed;
  const ValueStore::Moment since = model_.values.Now();
  std::vector<VarInfo*> vars;
  for (const PlannedField& field : command.fields) {
    if (std::find(vars.begin(), vars.end(), field.var) == vars.end()) vars.push_back(field.var);
  }
  bool is_read = false;
  for (const ReadGroup& group : GroupByGetCommand(vars)) {
    if (stop_.stop_requested()) break;
    is_read |= reader_.ReadGroupOnce(model_, client, group) == 0;
  }
  for (std::size_t i = 0; i < command.fields.size(); ++i) Judge(command.fields[i], since, outcomes[i]);
  return is_read;
}

/// Fields that could not be read back keep their verdicts, as do angles that the sensor does not report.
void Writing::Judge(const PlannedField& field, ValueStore::Moment since, ChangeOutcome& outcome) const {
  if (field.angle) {
    if (*field.angle >= model_.values.FovSectorsRead(since)) return;
    outcome.holds = AngleText(model_.values.ReportedFov().at(*field.angle));
    outcome.verdict = outcome.holds == field.new_text ? Verdict::kVerified : Verdict::kDiffers;
    return;
  }
  const auto verification = model_.values.Verify(*field.var);
  if (!verification || !verification->read_back) return;
  outcome.verdict = verification->equal ? Verdict::kVerified : Verdict::kDiffers;
  outcome.holds = *verification->read_back;
}

}  // namespace

ChangeOutcome NotSent(const PlannedField& field) {
  return {field.id(), field.name(), field.old_text, field.new_text, Verdict::kNotSent, {}, 0};
}

const char* VerdictName(Verdict verdict) {
  switch (verdict) {
    case Verdict::kVerified:
      return "verified";
    case Verdict::kDiffers:
      return "differs";
    case Verdict::kRefused:
      return "refused";
    case Verdict::kUnconfirmed:
      return "unconfirmed";
    case Verdict::kNotSent:
      return "not-sent";
  }
  return "";
}

bool RunReport::is_all_verified() const {
  return end == RunEnd::kComplete &&
         std::all_of(changes.begin(), changes.end(),
                     [](const ChangeOutcome& change) { return change.verdict == Verdict::kVerified; });
}

RunReport PlanRun::Run(Model& model, const Client& client, const SetPlan& plan, const RunOptions& options,
                       const std::stop_token& stop) const {
  return Writing(model, client, reader_, options, stop).Of(plan);
}

}  // namespace varkel
