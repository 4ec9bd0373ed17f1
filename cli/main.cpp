#include <QCoreApplication>
#include <QFileInfo>
#include <atomic>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <stop_token>
#include <thread>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "cli/manual.h"
#include "cli/run_sensors.h"
#include "cli/table_commands.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Platform/src/terminal.h"

namespace {

using namespace varkel;
using namespace varkel::cli;

/// The interval for checking the signal flag, since a handler may do no more than set it.
constexpr std::chrono::milliseconds kSignalCheck{50};

std::atomic<bool> stop_requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

extern "C" void RequestStop(int /*signal*/) {
  stop_requested = true;
}

/// Qt's debug lines are only for debugging the window.
void DropDebugLines(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
  if (type == QtCriticalMsg || type == QtFatalMsg) std::cerr << text.toStdString() << std::endl;
}

int WrongUse(Console& console, const std::string& text) {
  console.Note("varkelctl: " + text);
  return kWrongUse;
}

int ShowModels(const Arguments& arguments, const std::string& folder, Console& console) {
  const std::vector<std::string> models = ListModels(folder);
  if (arguments.json) {
    console.Result(
        JsonObject()
            .Raw("models", JsonList(models, [](const std::string& name) { return JsonText(name); }))
            .str());
  } else {
    for (const std::string& model : models) console.Result(Plain(model));
  }
  return models.empty() ? kFailed : kDone;
}

/// The sensors given on the command line; the error is a sentence.
tl::expected<std::vector<SensorTarget>, std::string> Targets(const Arguments& arguments) {
  SensorTarget usual;
  usual.model = arguments.model;
  if (!arguments.rs485.empty()) usual.rs485 = arguments.rs485;
  if (!arguments.uart.empty()) usual.uart = arguments.uart;
  std::vector<SensorTarget> targets;
  for (const std::string& host : arguments.hosts) {
    auto target = ParseTarget(host, usual);
    if (!target) return tl::unexpected(target.error());
    targets.push_back(*std::move(target));
  }
  if (!arguments.targets.empty()) {
    const auto listed = LoadTargets(arguments.targets, usual);
    if (!listed) return tl::unexpected(listed.error());
    targets.insert(targets.end(), listed->begin(), listed->end());
  }
  if (targets.empty()) targets.push_back(usual);
  return targets;
}

/// What is wrong with the command's own arguments; empty if nothing is.
std::string Misuse(const Arguments& arguments, std::size_t sensors) {
  if (arguments.command == "read" && !arguments.all && arguments.names.empty() && arguments.pages.empty()) {
    return "read needs a NAME, --page or --all.";
  }
  if (arguments.command == "compare" && arguments.defaults == !arguments.names.empty()) {
    return "compare needs one file, two files, or --defaults.";
  }
  if (arguments.command == "set") {
    for (const std::string& assignment : arguments.names) {
      if (assignment.find('=') == std::string::npos) return "\"" + assignment + "\" is not NAME=VALUE.";
    }
  }
  if (arguments.command == "snapshot" && sensors > 1 &&
      !QFileInfo(QString::fromStdString(arguments.output)).isDir()) {
    return "With several sensors -o of snapshot has to be an existing folder.";
  }
  if (arguments.command == "operation-log" && sensors > 1) return "operation-log takes one sensor.";
  return {};
}

/// Asks for confirmation on a terminal; elsewhere only --yes confirms. Returns the exit code, or nullopt to
/// continue.
std::optional<int> ExitUnlessConfirmed(const Arguments& arguments, std::size_t sensors, Console& console) {
  if (arguments.yes || (arguments.command != "restart" && arguments.command != "reset")) return std::nullopt;
  if (!quarn::lidar::IsTerminal(quarn::lidar::StandardStream::kInput)) {
    return WrongUse(console, arguments.command + " needs --yes when not run on a terminal.");
  }
  std::cerr << (arguments.command == "restart" ? "Restart " : "Reset all settings of ") << sensors
            << (sensors == 1 ? " sensor? [y/N] " : " sensors? [y/N] ") << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer == "y" || answer == "Y" || answer == "yes") return std::nullopt;
  console.Note("Nothing was done.");
  return kFailed;
}

int RunCommand(const Arguments& arguments, Console& console) {
  const std::string default_folder =
      QCoreApplication::applicationDirPath().toStdString() + "/../Config/varID";
  const std::string folder = arguments.tables.empty() ? default_folder : arguments.tables;
  if (arguments.command == "models") return ShowModels(arguments, folder, console);
  if (IsTableCommand(arguments.command)) return RunTableCommand(arguments, folder, console);
  if (arguments.command == "capture show") return ShowCapture(arguments, folder, console);
  const auto targets = Targets(arguments);
  if (!targets) return WrongUse(console, targets.error());
  if (const std::string misuse = Misuse(arguments, targets->size()); !misuse.empty()) {
    return WrongUse(console, misuse);
  }
  if (arguments.command == "compare" && arguments.names.size() == 2) {
    const SensorResult result = CompareFiles(arguments);
    const bool is_note = result.exit == kFailed && !arguments.json;
    is_note ? console.Note("varkelctl: " + result.text)
            : console.Result(arguments.json ? result.json : result.text);
    return result.exit;
  }
  if (const auto end = ExitUnlessConfirmed(arguments, targets->size(), console)) return *end;
  quarn::lidar::CaptureRecorder recorder(
      [&console](const std::string& end) { console.Note("varkelctl: " + Plain(end)); });
  if (!arguments.capture.empty()) {
    const std::string fault = recorder.Start(QString::fromStdString(arguments.capture).toStdU16String());
    if (!fault.empty()) {
      console.Note("varkelctl: " + Plain(fault));
      return kFailed;
    }
  }
  quarn::lidar::Timeouts().exchange_ms = static_cast<std::uint32_t>(arguments.timeout_ms);
  quarn::lidar::Timeouts().small_exchange_ms = static_cast<std::uint32_t>(arguments.timeout_ms);
  std::signal(SIGINT, RequestStop);
  std::signal(SIGTERM, RequestStop);
  std::stop_source stop;
  const std::jthread watcher([&stop](const std::stop_token& done) {
    while (!stop_requested && SleepUnlessStopped(done, kSignalCheck)) continue;
    if (stop_requested) stop.request_stop();
  });
  const std::stop_token token = stop.get_token();
  return RunSensors(arguments, *targets, folder, FindSensorCommand(arguments.command), console, token,
                    &recorder);
}

int Run(int argc, char** argv) {
  Arguments arguments;
  const auto parser = MakeParser(arguments);
  try {
    parser->parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return parser->exit(error) == 0 ? kDone : kWrongUse;
  }
  if (arguments.print_manual || arguments.print_completion) {
    std::cout << (arguments.print_manual ? ManualPage(*parser) : BashCompletion(*parser));
    return kDone;
  }
  if (arguments.command.empty()) {
    std::cerr << parser->help();
    return kWrongUse;
  }
  const QCoreApplication application(argc, argv);
  qInstallMessageHandler(DropDebugLines);
  Console console;
  return RunCommand(arguments, console);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "varkelctl: " << error.what() << std::endl;
    return varkel::cli::kFailed;
  }
}
