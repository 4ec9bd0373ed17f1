#include "VarkelCore/src/state/state_reader.h"

#include <algorithm>
#include <exception>
#include <string>
#include <unordered_map>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/catalogue/variable_search.h"
#include "VarkelCore/src/session/exchange.h"
#include "VarkelCore/src/session/ktc_connect.h"
#include "VarkelCore/src/state/exchange_text.h"
#include "VarkelCore/src/state/fov_values.h"
#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/Platform/src/hex_text.h"

namespace varkel {

namespace {

using quarn::lidar::KtcClient;

bool IsVersion(const VarInfo& var) {
  return var.var_type == "HWVER" || var.var_type == "SWVER_YMD";
}

/// Takes the group's values that were read since `since`; adds the other variables to `missing`.
void TakeValues(const Model& model, const ReadGroup& group, ValueStore::Moment since, SensorState& state,
                std::vector<std::string>& missing) {
  for (const VarInfo* var : group.vars) {
    if (!model.values.IsRead(*var, since)) {
      missing.push_back(var->var_id);
      continue;
    }
    const ValueStore::Shown shown = model.values.Show(*var);
    StateValue value = MakeStateValue(*model.catalogue, *var, shown.text, quarn::lidar::HexText(shown.raw));
    if (IsVersion(*var)) state.versions.emplace_back(value.name, value.text);
    if (var->var_name == "SN") state.sn = value.text;
    if (var->var_name == "PN") state.pn = value.text;
    state.values.push_back(std::move(value));
    if (var == FovChannel(*model.catalogue)) {
      AppendFovAngles(*model.catalogue, *var, model.values.ReportedFov(), model.values.FovSectorsRead(since),
                      state.values);
    }
  }
}

/// Stores a reply with the field of view; angles that it lacks keep their values.
void StoreAngles(Model& model, std::span<const std::uint8_t> reply, ValueStore::Moment asked) {
  FovAngles angles = model.values.ReportedFov();
  quarn::lidar::FovAngles starts{};
  quarn::lidar::FovAngles ends{};
  std::copy_n(angles.begin(), kFovSectors, starts.begin());
  std::copy_n(angles.begin() + kFovSectors, kFovSectors, ends.begin());
  const int sectors = quarn::lidar::DecodeMultiFov(reply, starts, ends);
  std::copy_n(starts.begin(), kFovSectors, angles.begin());
  std::copy_n(ends.begin(), kFovSectors, angles.begin() + kFovSectors);
  model.values.ReadFov(angles, asked, static_cast<std::size_t>(sectors));
}

/// Values are read group by group; a state lists them in the order of the request.
void SortAs(const std::vector<VarInfo*>& vars, std::vector<StateValue>& values) {
  std::unordered_map<std::string, std::size_t> place;
  for (const VarInfo* var : vars) {
    place.emplace(var->var_id, place.size());
    if (var->set_cmd != kFovSetCommand) continue;
    for (std::size_t i = 0; i < 2 * kFovSectors; ++i) place.emplace(FovAngleId(*var, i), place.size());
  }
  std::sort(values.begin(), values.end(),
            [&](const StateValue& a, const StateValue& b) { return place.at(a.id) < place.at(b.id); });
}

}  // namespace

StateReading StateReader::Read(Model& model, KtcClient& client, const std::vector<VarInfo*>& vars,
                               const std::stop_token& stop, const Progress& progress) const {
  StateReading reading{EmptyState(model), ReadEnd::kComplete};
  const std::vector<ReadGroup> groups = GroupByGetCommand(vars);
  std::size_t done = 0;
  for (const ReadGroup& group : groups) {
    if (progress) progress(done++, groups.size());
    const ValueStore::Moment since = model.values.Now();
    const bool is_over = stop.stop_requested() || reading.end != ReadEnd::kComplete;
    const std::int32_t code = is_over ? KtcClient::kNotSent : ReadGroupOnce(model, client, group);
    std::vector<std::string> missing;
    TakeValues(model, group, since, reading.state, missing);
    if (stop.stop_requested()) {
      reading.end = ReadEnd::kStopped;
    } else if (code < 0 && reading.end == ReadEnd::kComplete && !AnswersKtc(client)) {
      reading.end = stop.stop_requested() ? ReadEnd::kStopped : ReadEnd::kConnectionLost;
    }
    if (missing.empty()) continue;
    const VarInfo& first = *group.vars.front();
    reading.state.failed.push_back({first.get_cmd, first.get_cmd_payload, code,
                                    code == 0 ? "the reply lacks the field" : ExchangeCodeText(code),
                                    std::move(missing)});
  }
  if (progress) progress(groups.size(), groups.size());
  SortAs(vars, reading.state.values);
  return reading;
}

std::int32_t StateReader::ReadGroupOnce(Model& model, KtcClient& client, const ReadGroup& group) const {
  const VarInfo& first = *group.vars.front();
  try {
    const Command command = ParseCommandText(first.get_cmd);
    const ValueStore::Moment asked = model.values.Now();
    const ExchangeResult reply =
        QueryTableCommand(client, command, RequestPayload(command, first.get_cmd_payload_bytes));
    if (!reply) return reply.error();
    if (reply->empty()) return 0;
    reader_.StoreReply(model, group.vars, *reply, asked);
    if (group.vars.front() == FovChannel(*model.catalogue)) StoreAngles(model, *reply, asked);
  } catch (const std::exception&) {
    // A fault of the table: a get command that is not a number, or a record without a type. Nothing was read.
  }
  return 0;
}

}  // namespace varkel
