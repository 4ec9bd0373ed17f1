#include "VarkelCore/src/state/variable_key.h"

namespace varkel {

tl::expected<VarInfo*, std::string> FindVariable(const ConfigParser& catalogue, const std::string& key) {
  if (VarInfo* const var = catalogue.FindById(key)) return var;
  VarInfo* found = nullptr;
  std::string ids;
  for (const auto& [id, var] : catalogue.var_map()) {
    if (var->var_name != key) continue;
    ids += (ids.empty() ? "" : ", ") + id;
    if (found != nullptr) continue;
    found = var.get();
  }
  if (found == nullptr) return tl::unexpected("There is no variable \"" + key + "\".");
  if (ids != found->var_id) {
    return tl::unexpected("Several variables are named \"" + key + "\": " + ids + ". Use the identifier.");
  }
  return found;
}

}  // namespace varkel
