#pragma once

#include <string>

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/exit_code.h"

namespace varkel::cli {

/// Whether the command works on a table alone and needs no sensor.
bool IsTableCommand(const std::string& command);

/// Runs "table lint", "table reference" or "table dissector".
ExitCode RunTableCommand(const Arguments& arguments, const std::string& table_folder, Console& console);

}  // namespace varkel::cli
