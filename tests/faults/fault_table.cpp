#include "tests/faults/fault_table.h"

#include <QVariantList>
#include <array>
#include <map>
#include <tuple>
#include <utility>

#include "tests/core/marvo_sample.h"

namespace varkel::test {

namespace {

using Ends = Operation::Ends;
using Bench = FaultBench;

constexpr int kFine = 1;
constexpr int kHalf = 2;  ///< half of the reply came: with the header or within it
constexpr int kUnknown = 3;

/// What a failed exchange is reported with.
enum Way : std::size_t {
  kQuery,   ///< the client's return code
  kCode,    ///< the same, but never 0
  kTunnel,  ///< a serial command inside KTC, the KTC reply disturbed
  kSet,     ///< the same, the carried reply disturbed
  kGet,
  kLine,       ///< over the lines
  kOtaTunnel,  ///< firmware frames, each disturbed one asked for three times
  kOtaCarried,
  kOtaLine,
};

int CodeOf(Way way, const Fault& fault) {
  static const std::map<std::string, std::array<int, 9>> codes = {
      {"noise", {kFine, kFine, kFine, -2, -2, kFine, kFine, -2, kFine}},
      {"late", {-2, -2, -3, -3, -3, -2, kUnknown, kUnknown, kUnknown}},
      {"wrong-echo", {0, -1, -2, -2, -2, -2, -2, -2, -2}},
      {"error", {7, 7, 7, 7, -2, -2, 7, 7, 7}},
      {"more", {-3, -3, -3, -2, -2, -2, -3, -2, -2}},
      {"less", {kFine, kFine, -2, -2, -2, -2, -2, -2, -2}},
      {"silence", {-2, -2, -3, -3, -3, -2, -3, -3, -2}},
      {"close", {kHalf, kHalf, -3, -3, -3, -3, -1, -1, -1}},
  };
  const auto row = codes.find(fault.kind);
  const int code = row == codes.end() ? kFine : row->second.at(way);
  if (code != kHalf) return code;
  constexpr std::size_t kHeader = 8;
  return fault.at <= fault.steps.size() && fault.steps[fault.at - 1] >= kHeader ? -3 : -2;
}

/// How exchange number `index` of a network operation ends when number `fault.at` is disturbed.
int CodeAt(const Fault& fault, std::size_t index) {
  if (index < fault.at) return kFine;
  if (index == fault.at) return CodeOf(kQuery, fault);
  const bool next = index == fault.at + 1;
  if (fault.kind == "close") return next ? -2 : -4;
  return fault.kind == "late" && next ? 0 : kFine;  // the late reply is taken for the next one's
}

bool IsFineTo(const Fault& fault, std::size_t last) {
  bool fine = true;
  for (std::size_t index = 1; index <= last; ++index) fine &= CodeAt(fault, index) == kFine;
  return fine;
}

Lines Nothing(const Fault&) {
  return {};
}

/// What is told for the code; it stands for "%" in the error.
Lines Told(int code, const std::string& success, std::string error) {
  if (code == kUnknown) return kUntellable;
  if (code == kFine) return success.empty() ? Lines{} : Lines{"success: " + success};
  if (const auto at = error.find('%'); at != std::string::npos) error.replace(at, 1, std::to_string(code));
  return {"error: " + error};
}

std::string Must(bool holds, const char* what) {
  return holds ? std::string() : what;
}

/// A frame that is disturbed once is sent again, but for a refusal and a broken line.
bool Heals(Way way, const std::vector<Point>& points, const Fault& fault) {
  const bool repeats = way == kOtaCarried || way == kOtaLine;
  return repeats && !points[fault.at - 1].nth.empty() && fault.kind != "error" && fault.kind != "close";
}

/// One exchange, or one of several like it, and what is told for its code.
Operation Simple(std::string name, std::string model, std::function<void(Bench&)> start, Way way,
                 const std::string& success, const std::string& error,
                 const std::vector<Point>& points = {}) {
  const auto expected = [=](const Fault& fault) {
    return Told(Heals(way, points, fault) ? kFine : CodeOf(way, fault), success, error);
  };
  return {std::move(name), std::move(model), std::move(start), expected, points};
}

// The network

Operation Connect() {
  Operation op{"connect", "Quenta", [](auto& bench) { bench.manager->ConnectLidar(); }};
  op.expected = [](const Fault& fault) {
    // The second command makes up for the first, as long as the sensor is in step.
    const bool second = fault.kind != "late" && fault.kind != "close";
    if (CodeOf(kQuery, fault) == kFine || (fault.at == 2 && second)) return Lines{};
    return Lines{"error: Connection Failed. Please check your network settings.",
                 "ERROR Connection Error: Lidar has No KTC reply."};
  };
  op.points = {{"*"}, {"0x07"}, {"0x08", "", "0x07=error"}};
  op.connects = true;
  return op;
}

/// The window's check; its answer stands for what is told.
Operation Probe() {
  Operation op = Connect();
  op.name = "probe";
  op.connects = false;
  op.start = [](auto& bench) { bench.manager->CheckConnectionInBackground(); };
  op.expected = [connected = op.expected](auto& fault) {
    return connected(fault).empty() ? Lines{"success: alive"} : Lines{};
  };
  op.over = [](auto& bench) {
    if (bench.ended > 0 && std::exchange(bench.alive, false)) bench.successes.append("alive");
    return bench.ended > 0;
  };
  return op;
}

Operation ReadPage(int page) {
  Operation op{"page " + std::to_string(page), "Quenta",
               [page](auto& bench) { bench.manager->ReadPageInBackground(page); }, Nothing};
  op.check = [page](auto& bench, bool) {
    return Must(bench.ShowsWhatTheSensorHas(page), "a value that neither the table nor the sensor has");
  };
  return op;
}

Operation Refresh() {
  Operation op{"refresh", "Quenta", [](auto& bench) { bench.manager->setModuleIndexUse(1); }, Nothing};
  op.over = [](auto& bench) {
    if (bench.rounds > 1) bench.manager->setModuleIndexUse(-1);
    return bench.rounds > 1;
  };
  return op;
}

/// `reads` exchanges bring the page up to date, then the commands go out.
Operation Save(const char* name, int page, const std::vector<std::pair<const char*, const char*>>& edits,
               std::size_t reads, const std::vector<std::string>& commands) {
  Operation op{name, "Quenta"};
  op.start = [page, edits](auto& bench) {
    for (const auto& [var_name, text] : edits) bench.Edit(var_name, text);
    if (edits.empty()) bench.manager->SetMultiFovConfig(0, QStringLiteral("10"));
    bench.manager->RunInBackground(page);
  };
  op.expected = [reads, commands](const Fault& fault) {
    for (std::size_t i = 0; i < commands.size(); ++i) {
      const int code = CodeAt(fault, reads + i + 1);
      const std::string& command = commands[i];
      if (code == kFine || (command == "0x21" && code == -2)) continue;
      if (command == "0x22") return Told(code, "", "Set Failed: set channel fov failed");
      const std::string failed = "SET [" + command + "] FAILED";
      return Lines{"WARNING " + failed, "error: " + failed,
                   Told(code, "", "Set Failed: " + command + " SET  ret_code: %").front()};
    }
    return Lines{
        "success: Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you will "
        "need to restart the lidar for it to work."};
  };
  op.check = [edits, commands](auto& bench, bool success) {
    bool marked = bench.manager->getSetMapSize() == (success ? 0 : static_cast<int>(commands.size()));
    for (const auto& [var_name, text] : edits) marked &= bench.IsEdited(var_name) != success;
    return Must(marked, "the marks of unsaved edits are wrong");
  };
  return op;
}

/// A console shows a refusal that a serial frame brings as it shows any other reply.
Operation Console(const char* model, const char* code, const char* payload, const std::string& error, Way way,
                  const std::vector<Point>& points = {}) {
  const auto send = [=](auto& bench) { bench.manager->SendCommandInBackground(code, payload); };
  Operation op = Simple("console", model, send, way, "", error + " command header and payload.", points);
  op.expected = [way, simple = op.expected](auto& fault) {
    const bool shown = way != kQuery && (fault.kind == "wrong-echo" || fault.kind == "error");
    return shown ? Lines{} : simple(fault);
  };
  op.patience_ms = way == kQuery ? 4000 : 5000;
  op.check = [](auto& bench, bool success) {
    return Must(bench.manager->getSendKtcCommandReturnHeader().isEmpty() != success,
                "a wrong reply is shown");
  };
  return op;
}

Operation Restart(bool reset) {
  const auto start = [reset](auto& bench) {
    reset ? bench.manager->ResetInBackground() : bench.manager->RestartInBackground();
  };
  Operation op = Simple(reset ? "reset" : "restart", "Quenta", start, kCode, "",
                        reset ? "Reset failed, ret_code: %."
                              : "Auto reboot failed, ret_code: %. Please reboot lidar manually.");
  op.restarts = true;
  op.disconnects = reset ? Ends::kNever : Ends::kOnSuccess;
  return op;
}

std::string WholeFile(Bench& bench, bool success) {
  return Must(bench.files() == (success ? 1U : 0U), "a file that is not whole, or none");
}

Operation Download(const std::string& log) {
  const auto start = [log](auto& bench) {
    bench.manager->DownloadLog(bench.File(""), QString::fromStdString(log));
  };
  Operation op = Simple("download " + log, "Quenta", start, kQuery, log + " download successful.",
                        log + " download failed. return code: -1");
  op.check = WholeFile;
  return op;
}

Operation OperationLog() {
  Operation op{"operation log", "Quenta"};
  op.start = [](auto& bench) { bench.manager->DownloadOperationLog(bench.File("log.tar")); };
  op.expected = [](const Fault& fault) {
    const bool fine = IsFineTo(fault, fault.steps.size());
    return Told(fine ? kFine : -1, "Operation log download successful.", "Operation log download failed.");
  };
  op.alone = true;
  op.check = WholeFile;
  return op;
}

// Firmware

constexpr std::size_t kPieces = 3;
const std::vector<std::uint8_t> kFirmware(kPieces * 1024 - 500, 0x5A);

/// Pieces, then the restart.
Operation NetworkUpgrade(const char* name, const char* model, std::vector<Point> points,
                         std::function<void(Bench&)> start) {
  Operation op{name, model, std::move(start)};
  op.expected = [](const Fault& fault) {
    if (!IsFineTo(fault, kPieces)) return Told(-1, "", "Upgrade package transfer failed or is terminated.");
    const int code = fault.at > kPieces ? CodeOf(kCode, fault) : kFine;
    Lines lines = Told(code, "", "Auto reboot failed, ret_code: %. Please reboot lidar manually.");
    if (code != kFine) lines.emplace_back("error: Auto reboot failed. Please reboot lidar manually.");
    lines.emplace_back(
        "success: Upgrade package transmitted successfully. The lidar will automatically reboot within 10 "
        "seconds.");
    return lines;
  };
  op.points = std::move(points);
  op.patience_ms = 60000;
  op.restarts = true;
  op.disconnects = Ends::kOnSuccess;
  op.check = [](auto& bench, bool success) {
    return Must(!success || bench.sensor->ReceivedPackage() == kFirmware, "the package did not come");
  };
  return op;
}

std::string Arrived(Bench& bench, bool success, std::size_t files) {
  auto& device = bench.sensor ? bench.sensor->device() : bench.on_lines->device();
  return Must(!success || device.firmware.Received().size() == files, "the firmware did not come");
}

Operation SerialUpgrade(const char* model, const std::vector<Point>& points, Way way) {
  const auto start = [](auto& bench) { bench.manager->ZeltoUpgradeLidar(bench.Package(kFirmware)); };
  Operation op = Simple("zelto upgrade", model, start, way,
                        "Upgrade package transmitted successfully. The lidar will automatically reboot.",
                        "Upgrade package transfer failed or is terminated. error:%", points);
  op.patience_ms = way == kOtaLine ? 30000 : 5000;
  op.disconnects = Ends::kAlways;
  op.check = [](auto& bench, bool success) { return Arrived(bench, success, 1); };
  return op;
}

Operation MarvoUpgrade() {
  static const std::vector<std::tuple<Point, Way, const char*>> steps = {
      {Point{"0x00013900", "#1"}, kCode, "set baudrate failed"},
      {Point{"ldcmd-set:12"}, kSet, "change mode failed"},
      {Point{"0x00013900", "#2"}, kCode, "set upgrade baudrate failed"},
      {Point{"ota:17"}, kOtaCarried, "BMB_APP_B failed, error=%"},
      {Point{"ota:18", "#2"}, kOtaCarried, "BMB_APP_B failed, error=%"},
      {Point{"ota:19"}, kOtaCarried, "BMB_APP_B failed, error=%"},
      {Point{"ota:19", "#4"}, kOtaCarried, "TMB_PARAM failed, error=%"}};
  Operation op{"marvo upgrade", "Marvo-KTC"};
  for (const auto& step : steps) op.points.push_back(std::get<Point>(step));
  op.start = [](auto& bench) { bench.manager->MarvoUpgradeLidar(bench.Package(FullMarvoPackage())); };
  op.expected = [points = op.points](const Fault& fault) {
    const auto& [point, way, failed] = steps[fault.at - 1];
    // A refusal of the mode has the form of another partition; the sensor is not ready then.
    const bool refused = way == kSet && fault.kind == "error";
    return Told(Heals(way, points, fault) ? kFine : CodeOf(way, fault),
                "Marvo upgrade completed. The lidar will automatically reboot.",
                std::string("Marvo upgrade: ") + (refused ? "BMB_APP_A failed, error=9" : failed));
  };
  op.patience_ms = 5000;
  op.disconnects = Ends::kOnSuccess;
  op.check = [](auto& bench, bool success) { return Arrived(bench, success, 4); };
  return op;
}

// Small sensors

constexpr char kTunnelled[] = "0x0002244C";  ///< what every serial command begins with inside KTC

/// The baud rate that goes out need not be answered.
Operation SmallConnect(const char* model) {
  Operation op{"connect", model,         [](auto& bench) { bench.manager->ConnectLidar(); },
               Nothing,   {{"*", "#1"}}, 5000};
  op.connects = true;
  return op;
}

struct Function {
  const char* name;
  QVariantList arguments;
  const char* command;
  Way way;
  std::string what;
  std::string success{};
};

const std::vector<Function> kFunctions = {
    {"ZeltoSetStandby", {1}, "ldcmd-set:11", kSet, "set lidar mode"},
    {"ZeltoSetSpinRate", {20}, "ldcmd-set:10", kSet, "set lidar spin rate"},
    {"ZeltoSetReturnMode", {1}, "ldcmd-set:9", kSet, "set lidar return mode"},
    {"ZeltoGetCorrection", {"FILE"}, "ldcmd-get:7", kGet, "get calibration"},
    {"ZeltoGetLidarFunctionSafety", {}, "ldcmd-get:8", kGet, "get function safety"},
    {"MarvoSetIMURange", {5, 3}, "ldcmd-get:11", kGet, "set IMU range", "IMU range set successfully"},
    {"ZeltoGetBaudRate", {}, "0xFF", kCode, "get baud rate"},
    {"ZeltoSetBaudRateFromUI", {"9600"}, "0x00013900", kCode, "set baud rate", "set baud rate successful"},
    {"ZeltoGetDestinationConfig", {}, "0x08", kCode, "get destination config"},
    {"ZeltoSetDestinationIPandPort",
     {"10.0.0.5", 2000},
     "0x20",
     kCode,
     "set destination IP and port",
     "set destination IP and port successful"},
};

/// A fault makes a notice and a log line.
Operation Call(const Function& function, const std::string& command, Way way) {
  Operation op{function.name, "Marvo-KTC"};
  op.start = [function](auto& bench) {
    QVariantList arguments = function.arguments;
    if (arguments.value(0) == QLatin1String("FILE")) arguments[0] = bench.File("file").toLocalFile();
    bench.manager->CallInBackground(QLatin1String(function.name), arguments);
  };
  op.expected = [=](const Fault& fault) {
    int code = CodeOf(way, fault);
    if (command == "0x08" && fault.kind == "less") code = -2;   // no room for the port
    if (command == "0x08" && fault.kind == "close") code = -3;  // half of 18 bytes
    Lines lines = Told(code, function.success, function.what + " error, ret:%");
    if (code != kFine) lines.push_back("ERROR" + lines.front().substr(lines.front().find(' ')));
    return lines;
  };
  op.points = {{command}};
  op.patience_ms = 5000;
  op.check = [](auto& bench, bool ok) { return Must(ok || bench.files() == 0, "a file is left"); };
  return op;
}

}  // namespace

std::vector<Operation> Operations() {
  const std::string kAsk = "Query Serial command fail. Please ";
  const std::vector<Point> frames = {{"ota:1"}, {"ota:2"}, {"ota:2", "#2"}, {"ota:3"}};
  const std::vector<Point> pieces = {{"0x83", "#1"}, {"0x83", "#2"}, {"0x83", "#3"}, {"0x10"}};
  std::vector<Operation> all = {
      Connect(),
      Probe(),
      ReadPage(0),
      ReadPage(2),
      ReadPage(7),
      Refresh(),
      Save("save", 4, {{"Spin Rate", "300"}, {"Sync Angle", "77"}, {"Maximum Range", "99"}}, 3,
           {"0x41", "0x45", "0x43"}),
      Save("save addresses", 2, {{"Sensor IP", "192.168.1.77"}, {"Destination Port", "3000"}}, 1,
           {"0x20", "0x21"}),
      Save("save fields of view", 5, {}, 1, {"0x22"}),
      Save("save safety", 7, {{"Heartbeat Period", "700"}}, 1, {"0x01000102"}),
      Console("Quenta", "0x07", "", "Query ktc command fail. Please input right ktc", kQuery),
      Restart(false),
      Restart(true),
      Download("Fault Log"),
      Download("Event Log"),
      OperationLog(),
      NetworkUpgrade("upgrade", "Quenta", {},
                     [](auto& bench) { bench.manager->UpgradeLidar(bench.Package(kFirmware), 6, 1, 0); }),
      SmallConnect("Zelto-KTC"),
      SmallConnect("Marvo-KTC"),
      Console("Zelto-KTC", "02", "08", kAsk + "check BytesFlow in Log Window. Please input right Serial",
              kGet, {{"ldcmd-get:8"}}),
      SerialUpgrade("Zelto-KTC", frames, kOtaCarried),
      SerialUpgrade("Zelto-KTC", {{kTunnelled}}, kOtaTunnel),
      NetworkUpgrade("junction box", "Marvo-KTC", pieces,
                     [](auto& bench) {
                       bench.manager->ZeltoSetUpgradeMode(2);
                       bench.manager->ZeltoUpgradeLidar(bench.Package(kFirmware));
                     }),
      MarvoUpgrade(),
      Console("Zelto", "02", "08", kAsk + "input right Serial", kLine, {{"ldcmd-get:8"}}),
      SerialUpgrade("Zelto", frames, kOtaLine)};
  for (const Function& function : kFunctions) {
    all.push_back(Call(function, function.command, function.way));
    if (function.way != kCode) all.push_back(Call(function, kTunnelled, kTunnel));
  }
  return all;
}

}  // namespace varkel::test
