#include "VarkelCore/src/pages/page_reading.h"

#include <exception>
#include <vector>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/catalogue/variable_search.h"
#include "VarkelCore/src/tasks/diagnostics.h"

namespace varkel {

bool PageReading::ReadPage(int module, const std::function<bool()>& replaced) const {
  const auto session = connection_.session();
  const auto model = models_.model();
  if (connect_type_ != kNetwork || !session || !model) return false;
  if (!session->has_pages() || !session->is_ktc_open() || !session->is_idle()) return false;
  if (module < 0 || static_cast<std::size_t>(module) >= model->catalogue->module_vars().size()) return false;
  const auto groups = GroupByGetCommand(ReadableVars(*model->catalogue, module));
  // A request for another page need not wait for every time-out of a silent sensor.
  const auto go_on = [&](bool answered) { return !session->has_ended() && (answered || !replaced()); };
  reader_.ReadGroups(*model, *session->ktc_client(), groups, "VarkelManager::GetLidarModuleInfo", go_on);
  return true;
}

bool PageReading::RefreshShownPage(SensorSession& session, const std::stop_token& stop) const {
  const auto model = models_.model();
  if (!model || !session.is_idle()) return false;
  std::vector<VarInfo*> live;
  for (VarInfo* var : ReadableVars(*model->catalogue, shown_module_)) {
    if (var->timer_update) live.push_back(var);
  }
  const auto groups = GroupByGetCommand(live);
  return reader_.ReadGroups(*model, *session.ktc_client(), groups, "VarkelManager::updatePagesTimer",
                            [&stop](bool) { return !stop.stop_requested(); }) > 0;
}

bool PageReading::UpdateSingleVarInfo(const std::string& key, const std::string& search_type) const {
  const auto session = connection_.session();
  const auto model = models_.model();
  if (!session || !session->is_ktc_open() || !model) return false;
  VarInfo* const var = searchVarPtr(*model->catalogue, key, search_type);
  if (var == nullptr || var->get_cmd.empty()) return false;
  try {
    return reader_.GetInfoFromLidar(*model, *session->ktc_client(), *var);
  } catch (const std::exception& error) {
    DebugLine("VarkelManager::UpdateSingleVarInfo", error.what());
    return false;
  }
}

}  // namespace varkel
