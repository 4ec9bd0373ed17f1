#pragma once

#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/state/sensor_target.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exit_code.h"

namespace varkel::cli {

/// Runs a command on every sensor, so many at once as the arguments say. One that fails does not stop the
/// others; results show in the order of the targets, several with a summary. A stop ends all of them.
ExitCode RunSensors(const Arguments& arguments, const std::vector<SensorTarget>& targets,
                    const std::string& table_folder, const SensorCommand& command, Console& console,
                    const std::stop_token& stop);

}  // namespace varkel::cli
