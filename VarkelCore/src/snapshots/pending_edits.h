#pragma once

#include <string>
#include <unordered_set>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The keys (SettableKey) of the user's unsaved edits.
std::unordered_set<std::string> PendingKeys(const Model& model);

}  // namespace varkel
