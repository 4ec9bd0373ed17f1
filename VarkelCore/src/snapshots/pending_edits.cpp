#include "VarkelCore/src/snapshots/pending_edits.h"

#include <cstddef>

#include "VarkelCore/src/state/fov_values.h"

namespace varkel {

std::unordered_set<std::string> PendingKeys(const Model& model) {
  std::unordered_set<std::string> keys;
  for (const auto& [id, var] : model.catalogue->var_map()) {
    if (model.values.IsEdited(*var)) keys.insert(id);
  }
  const VarInfo* const channel = FovChannel(*model.catalogue);
  const FovAngles shown = model.values.Fov();
  const FovAngles reported = model.values.ReportedFov();
  for (std::size_t i = 0; channel != nullptr && i < shown.size(); ++i) {
    if (shown.at(i) != reported.at(i)) keys.insert(FovAngleId(*channel, i));
  }
  return keys;
}

}  // namespace varkel
