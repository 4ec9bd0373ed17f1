#include "VarkelCore/src/catalogue/variable_search.h"

#include <algorithm>
#include <cctype>

#include "libquarn/Platform/src/trace.h"

namespace varkel {

namespace {

bool IsSpace(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}
char Upper(char c) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}
char Lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

}  // namespace

VarInfo* searchVarPtr(const ConfigParser& catalogue, const std::string& key, const std::string& search_type) {
  if (search_type == "var_id" || search_type == "id") return catalogue.FindById(key);
  if (search_type == "var_name" || search_type == "name") return catalogue.FindByName(key);
  quarn::platform::TraceLine("VarkelManager::searchVarPtr(): unknown search type");
  return nullptr;
}

bool HasVariableNamed(const ConfigParser& catalogue, const std::string& name) {
  if (name.empty()) return false;
  std::string capitalised = name;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (i == 0 || IsSpace(name[i - 1])) capitalised[i] = Upper(name[i]);
  }
  std::string lower = name;
  std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
  return catalogue.FindByName(capitalised) != nullptr || catalogue.FindByName(lower) != nullptr;
}

std::string PageValue(const ConfigParser& catalogue, const std::string& var_name) {
  for (const auto& module : catalogue.module_vars()) {
    for (const auto& group : module) {
      for (const VarInfo* var : group) {
        if (var->var_name == var_name) return catalogue.CurrentValue(*var);
      }
    }
  }
  return {};
}

}  // namespace varkel
