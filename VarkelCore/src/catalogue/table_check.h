#pragma once

#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// Looks for what would put a field of a set payload at a wrong place: a field length that is not that of its
/// type (a gap or an overlap on the wire), a place in the order that is missing, taken twice or skipped.
/// One sentence a finding; none for a sound table.
std::vector<std::string> CheckSetPayloads(const ConfigParser& catalogue);

}  // namespace varkel
