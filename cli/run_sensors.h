#pragma once

#include <stop_token>
#include <string>
#include <vector>

#include "VarkelCore/src/state/sensor_target.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exit_code.h"
#include "libquarn/Capture/src/capture_recorder.h"

namespace varkel::cli {

/// Runs a command on every sensor, as many at once as the arguments say. A failure on one sensor does not
/// stop the others. Results are shown in the order of the targets, with a summary if there are several. A
/// stop ends all of them. All exchanges are recorded by `recorder`, if given.
ExitCode RunSensors(const Arguments& arguments, const std::vector<SensorTarget>& targets,
                    const std::string& table_folder, const SensorCommand& command, Console& console,
                    const std::stop_token& stop, quarn::lidar::CaptureRecorder* recorder = nullptr);

}  // namespace varkel::cli
