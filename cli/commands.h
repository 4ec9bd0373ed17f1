#pragma once

#include <functional>
#include <stop_token>
#include <string>

#include "VarkelCore/src/state/json_text.h"
#include "VarkelCore/src/state/recording_report.h"
#include "VarkelCore/src/state/sensor_link.h"
#include "VarkelCore/src/state/state_reader.h"
#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/exit_code.h"

namespace varkel::cli {

/// The outcome of a command on one sensor.
struct SensorResult {
  ExitCode exit = kDone;
  std::string text;       ///< for people; without a final line end
  std::string json;       ///< one object on one line
  bool is_error = false;  ///< the text belongs on standard error
};

/// The context of a command on one sensor.
struct Job {
  const Arguments& arguments;
  const std::string& table_folder;
  SensorLink& link;
  RecordingReport& report;
  const std::stop_token& stop;
  const Console& console;
  const bool is_alone;  ///< this is the only sensor
  StateReader::Progress progress;
  /// Shows a line before the result, for commands that run continuously.
  std::function<void(const SensorResult&)> show;
};

using SensorCommand = std::function<SensorResult(const Job&)>;

/// The command with that name; empty if it needs no sensor.
SensorCommand FindSensorCommand(const std::string& name);

/// {"target", "model", "sn", "ok"}: the first keys of every JSON object about a sensor.
JsonObject JsonHead(const SensorTarget& target, const std::string& sn, bool ok);

/// The sensor's serial number, read from it if necessary; empty if the sensor does not report it.
std::string SerialNumber(const Job& job);

/// A result that is just a sentence.
SensorResult Sentence(const SensorTarget& target, ExitCode exit, const std::string& text);
/// The model has no such thing.
SensorResult ModelLacks(const Job& job, const std::string& what);

// One for each command.
SensorResult Info(const Job& job);
SensorResult Read(const Job& job);
SensorResult Watch(const Job& job);
SensorResult TakeSnapshot(const Job& job);
SensorResult CompareSensor(const Job& job);
SensorResult Set(const Job& job);
SensorResult Apply(const Job& job);
SensorResult RollBack(const Job& job);
SensorResult Send(const Job& job);
SensorResult Restart(const Job& job);
SensorResult Reset(const Job& job);
SensorResult DownloadLog(const Job& job);
SensorResult DownloadOperationLog(const Job& job);
SensorResult Upgrade(const Job& job);

/// Compares two files; needs no sensor.
SensorResult CompareFiles(const Arguments& arguments);

/// Shows a recording, decoded with the table in `table_folder` that the arguments name; needs no sensor.
ExitCode ShowCapture(const Arguments& arguments, const std::string& table_folder, Console& console);

}  // namespace varkel::cli
