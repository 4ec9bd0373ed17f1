#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "libquarn/Platform/src/file_path.h"
#include "simulator/src/datagram_stream.h"
#include "simulator/src/replay.h"
#include "simulator/src/simulated_sensor.h"
#include "simulator/src/simulated_small_sensor.h"
#include "simulator/transport_options.h"

namespace {

namespace fs = std::filesystem;
using quarn::platform::FilePath;
using quarn::platform::PathText;
using varkel::sim::DatagramStream;
using varkel::sim::Exchange;
using varkel::sim::Replay;
using varkel::sim::SensorOptions;
using varkel::sim::SerialRequest;
using varkel::sim::SimulatedSensor;
using varkel::sim::SimulatedSmallSensor;
using varkel::sim::SmallSensorOptions;
using varkel::sim::StreamChoice;
using varkel::sim::TlsChoice;

/// How often the flag is checked that a signal handler sets; a handler may do no more.
constexpr std::chrono::milliseconds kSignalCheck{50};
constexpr int kLongestRestartMs = 600'000;
/// The model without a network, with two serial lines.
constexpr char kSerialModel[] = "Zelto";
constexpr std::chrono::milliseconds kDataPeriod{100};

std::atomic<bool> stop_requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

extern "C" void RequestStop(int /*signal*/) {
  stop_requested = true;
}

/// The program's own file, even if it was started through the path or a link.
fs::path ProgramFile() {
#ifdef _WIN32
  return FilePath(_pgmptr);
#else
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error);
#endif
}

/// Next to the program in an installed or build tree, otherwise in the current folder.
fs::path DefaultTableFolder() {
  std::error_code error;
  const fs::path folder = ProgramFile().parent_path().parent_path() / "Config" / "varID";
  return fs::is_directory(folder, error) ? folder : fs::path("./Config/varID");
}

std::string KnownModels(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() == ".csv") names.push_back(PathText(entry.path().stem()));
  }
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "none" : text;
}

std::string TableOf(const std::string& model, const fs::path& folder) {
  const fs::path table = folder / FilePath(model + ".csv");
  std::error_code error;
  if (!fs::is_regular_file(table, error)) {
    throw std::runtime_error("There is no table for a model \"" + model + "\" in " + PathText(folder) +
                             " (models there: " + KnownModels(folder) + ").");
  }
  return PathText(table);
}

/// Prints one line per exchange; called on the clients' threads.
void PrintExchange(const Exchange& exchange) {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  std::printf("command 0x%02X, KTC %u.0, %zu payload bytes: return code %u, %zu payload bytes\n",
              unsigned{exchange.request.command}, unsigned{exchange.request.version},
              exchange.request.payload.size(), unsigned{exchange.return_code}, exchange.reply_size);
  std::fflush(stdout);
}

/// The same for a small sensor's requests.
void PrintSerialRequest(const SerialRequest& request) {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  const bool is_firmware = request.kind == quarn::lidar::ReplyKind::kOta;
  std::printf("%s frame 0x%02X, %zu bytes", is_firmware ? "firmware" : "command", unsigned{request.code},
              request.payload.size());
  if (is_firmware) {
    std::printf(", values %lu and %lu", static_cast<unsigned long>(request.first),
                static_cast<unsigned long>(request.second));
  } else if (!request.payload.empty()) {
    std::printf(", item %u", unsigned{request.payload.front()});
  }
  std::printf("\n");
  std::fflush(stdout);
}

void WaitForSignal() {
  std::fflush(stdout);
  while (!stop_requested) std::this_thread::sleep_for(kSignalCheck);
}

void RunUntilSignal(SimulatedSensor& sensor) {
  sensor.Start();
  std::printf("listening on %s:%u\n", sensor.address().c_str(), unsigned{sensor.port()});
  WaitForSignal();
  sensor.Stop();
}

void RunUntilSignal(SimulatedSmallSensor& sensor) {
  sensor.Start();
  std::printf("serial lines: %s %s\n", sensor.rs485_path().c_str(), sensor.uart_path().c_str());
  WaitForSignal();
  sensor.Stop();
}

void PrintResult(const DatagramStream& stream) {
  std::printf("datagrams: %llu sent, %llu refused by the system\n",
              static_cast<unsigned long long>(stream.sent()),
              static_cast<unsigned long long>(stream.refused()));
}

std::shared_ptr<Replay> LoadReplay(const std::string& path, bool paced) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("The recording " + path + " can't be opened.");
  auto replay = std::make_shared<Replay>(file, paced ? Replay::Pace::kRecorded : Replay::Pace::kAtOnce);
  std::printf("replaying %zu exchanges of %s\n", replay->exchanges(), replay->sensor().c_str());
  if (!replay->fault().empty()) std::printf("%s\n", replay->fault().c_str());
  return replay;
}

void PrintResult(const Replay& replay) {
  for (const std::string& line : replay.Unrecorded()) std::printf("not recorded: %s\n", line.c_str());
}

int Run(int argc, char** argv) {
  CLI::App app("A simulated lidar sensor on a TCP port or, for the model Zelto, on two serial lines",
               "varkel-sim");
  SensorOptions options;
  SmallSensorOptions lines;
  options.port = 9347;
  std::string model = "Quenta";
  std::string folder = PathText(DefaultTableFolder());
  bool verbose = false;
  int restart_time_ms = 3000;
  std::string recording;
  bool paced = false;
  TlsChoice tls;
  StreamChoice datagrams;
  app.add_option("--model", model, "Model, the name of its table")->capture_default_str();
  app.add_option("--config", folder, "Folder with the model tables")->capture_default_str();
  app.add_option("--address", options.address, "Address to listen on")->capture_default_str();
  app.add_option("--port", options.port, "Port to listen on; 0 picks a free one")->capture_default_str();
  app.add_option("--rs485-link", lines.rs485_link, "Create a link to the RS485 line of Zelto at this path");
  app.add_option("--uart-link", lines.uart_link, "Create a link to the UART line of Zelto at this path");
  app.add_option(
         "--fault", options.faults,
         "COMMAND=KIND[:ARGUMENT][#N], e.g. 0x07=silence or 0x12=late:1500; kinds: late, split, noise, "
         "wrong-echo, error, lying-length, clamp, silence, close, drop. A small sensor's frames are "
         "ldcmd:ITEM (or "
         "ldcmd-get:, "
         "ldcmd-set:) and ota:TYPE, e.g. ota:2=error:7#3. Repeatable")
      ->allow_extra_args(false);
  app.add_option("--restart-time", restart_time_ms, "Milliseconds during which a restart refuses connections")
      ->check(CLI::Range(0, kLongestRestartMs))
      ->capture_default_str();
  CLI::Option* const replayed =
      app.add_option("--replay", recording, "Answer as the sensor did in this recording (pcap)")
          ->type_name("FILE");
  app.add_flag("--paced", paced, "Also reproduce the recorded sensor's delays")->needs(replayed);
  AddOptions(app, tls);
  AddOptions(app, datagrams);
  app.add_flag("--verbose", verbose, "Print every exchange");
  CLI11_PARSE(app, argc, argv);

  options.restart_time = std::chrono::milliseconds(restart_time_ms);
  if (tls.wanted) options.tls = tls.options;
  options.table_path = TableOf(model, FilePath(folder));
  if (!recording.empty()) {
    if (model == kSerialModel) throw std::runtime_error("Only KTC can be replayed, not serial lines.");
    options.replay = LoadReplay(recording, paced);
  }
  const std::shared_ptr<const Replay> replay = options.replay;
  std::signal(SIGINT, RequestStop);
  std::signal(SIGTERM, RequestStop);
  if (verbose) {
    options.watcher = PrintExchange;
    options.serial_watcher = PrintSerialRequest;
  }
  const std::unique_ptr<DatagramStream> stream = StartStream(datagrams);
  if (stream) std::printf("sending datagrams to %s\n", datagrams.to.c_str());
  if (model == kSerialModel) {
    lines.faults = options.faults;
    lines.watcher = options.serial_watcher;
    lines.data_period = kDataPeriod;
    SimulatedSmallSensor sensor(std::move(lines));
    RunUntilSignal(sensor);
  } else {
    SimulatedSensor sensor(std::move(options));
    RunUntilSignal(sensor);
  }
  if (stream) PrintResult(*stream);
  if (replay) PrintResult(*replay);
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
