#include "VarkelCore/src/catalogue/model_choice.h"

#include <algorithm>

#include "VarkelCore/src/catalogue/model_names.h"

namespace varkel {

std::vector<std::string> ModelChoice::Models() const {
  return host_model_.empty() ? ListModels() : std::vector{host_model_};
}

bool ModelChoice::MayBeHostModel(const std::string& name) const {
  const std::vector<std::string> models = Models();
  return std::find(models.begin(), models.end(), name) != models.end() || IsHostModel(name);
}

}  // namespace varkel
