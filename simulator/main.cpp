#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "simulator/src/simulated_sensor.h"

namespace {

namespace fs = std::filesystem;
using varkel::sim::Exchange;
using varkel::sim::SensorOptions;
using varkel::sim::SimulatedSensor;

/// The longest time that a signal goes unnoticed: a handler may do no more than set a flag.
constexpr std::chrono::milliseconds kSignalCheck{50};
constexpr int kLongestRestartMs = 600'000;

std::atomic<bool> stop_requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

extern "C" void RequestStop(int /*signal*/) {
  stop_requested = true;
}

/// Beside the program in an installed or built tree, else in the current folder.
fs::path DefaultTableFolder(const char* program) {
  std::error_code error;
  const fs::path folder = fs::absolute(program, error).parent_path().parent_path() / "Config" / "varID";
  return !error && fs::is_directory(folder, error) ? folder : fs::path("./Config/varID");
}

std::string KnownModels(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() == ".csv") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "none" : text;
}

std::string TableOf(const std::string& model, const fs::path& folder) {
  const fs::path table = folder / (model + ".csv");
  std::error_code error;
  if (!fs::is_regular_file(table, error)) {
    throw std::runtime_error("There is no table of a model \"" + model + "\" in " + folder.string() +
                             " (models there: " + KnownModels(folder) + ").");
  }
  return table.string();
}

/// One line an exchange. Clients are served on threads of their own.
void PrintExchange(const Exchange& exchange) {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  std::printf("command 0x%02X, KTC %u.0, %zu payload bytes: return code %u, %zu payload bytes\n",
              unsigned{exchange.request.command}, unsigned{exchange.request.version},
              exchange.request.payload.size(), unsigned{exchange.return_code}, exchange.reply_size);
  std::fflush(stdout);
}

void RunUntilSignal(SimulatedSensor& sensor) {
  std::signal(SIGINT, RequestStop);
  std::signal(SIGTERM, RequestStop);
  sensor.Start();
  std::printf("listening on %s:%u\n", sensor.address().c_str(), unsigned{sensor.port()});
  std::fflush(stdout);
  while (!stop_requested) std::this_thread::sleep_for(kSignalCheck);
  sensor.Stop();
}

int Run(int argc, char** argv) {
  CLI::App app("A simulated lidar sensor on a TCP port", "varkel-sim");
  SensorOptions options;
  options.port = 9347;
  std::string model = "Quenta";
  std::string folder = DefaultTableFolder(argv[0]).string();
  bool verbose = false;
  int restart_time_ms = 3000;
  app.add_option("--model", model, "Model, named like its table")->capture_default_str();
  app.add_option("--config", folder, "Folder of the model tables")->capture_default_str();
  app.add_option("--address", options.address, "Address to listen on")->capture_default_str();
  app.add_option("--port", options.port, "Port to listen on; 0 picks a free one")->capture_default_str();
  app.add_option(
         "--misbehave", options.misbehaviours,
         "COMMAND=KIND[:ARGUMENT][#N], e.g. 0x07=silence or 0x12=late:1500; kinds: late, split, noise, "
         "wrong-echo, error, lying-length, silence, close. Repeatable")
      ->allow_extra_args(false);
  app.add_option("--restart-time", restart_time_ms, "Milliseconds for which a restart refuses connections")
      ->check(CLI::Range(0, kLongestRestartMs))
      ->capture_default_str();
  app.add_flag("--verbose", verbose, "Print every exchange");
  CLI11_PARSE(app, argc, argv);

  options.restart_time = std::chrono::milliseconds(restart_time_ms);
  options.table_path = TableOf(model, folder);
  if (verbose) options.watcher = PrintExchange;
  SimulatedSensor sensor(std::move(options));
  RunUntilSignal(sensor);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "varkel-sim: %s\n", error.what());
    return 1;
  }
}
