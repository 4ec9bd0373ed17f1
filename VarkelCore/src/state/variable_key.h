#pragma once

#include <string>
#include <tl/expected.hpp>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// The variable with this identifier ("3-12") or, failing that, this name without its unit; case matters. The
/// error is a sentence: no such variable, or several of that name with their identifiers.
tl::expected<VarInfo*, std::string> FindVariable(const ConfigParser& catalogue, const std::string& key);

}  // namespace varkel
