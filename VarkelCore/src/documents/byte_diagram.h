#pragma once

#include <string>
#include <vector>

#include "VarkelCore/src/documents/command_list.h"

namespace varkel {

/// The layout of a payload as an inline SVG diagram, eight bytes to a line: a box for each field, with its
/// first byte position and its name. Colours come from the classes "field", "other" and "code" of the page's
/// style.
std::string ByteDiagram(const Command& command, const std::vector<CommandField>& fields);

}  // namespace varkel
