#pragma once

#include <string>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// The variable with this identifier (`search_type` "var_id" or "id") or name ("var_name" or "name"); null if
/// there is none. Any other search type finds nothing and is reported on standard output.
VarInfo* searchVarPtr(const ConfigParser& catalogue, const std::string& key, const std::string& search_type);

/// Whether a variable has this name, either with each word's first letter in upper case or all in lower case:
/// tables spell names like "Restart" in two ways.
bool HasVariableNamed(const ConfigParser& catalogue, const std::string& name);

/// The text of the first variable on the pages with exactly this name; empty if there is none.
std::string PageValue(const ConfigParser& catalogue, const std::string& var_name);

}  // namespace varkel
