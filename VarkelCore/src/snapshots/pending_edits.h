#pragma once

#include <string>
#include <unordered_set>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The keys (SettableKey) of what the user has edited and not saved.
std::unordered_set<std::string> PendingKeys(const Model& model);

}  // namespace varkel
