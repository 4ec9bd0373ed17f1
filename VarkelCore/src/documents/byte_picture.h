#pragma once

#include <string>
#include <vector>

#include "VarkelCore/src/documents/command_list.h"

namespace varkel {

/// The bytes of a payload as an inline SVG picture, eight to a line: a box for each field, with its first
/// byte and its name. Colours come from the classes "field", "other" and "code" of the page's style.
std::string BytePicture(const Command& command, const std::vector<CommandField>& fields);

}  // namespace varkel
