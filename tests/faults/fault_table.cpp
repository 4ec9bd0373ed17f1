#include "tests/faults/fault_table.h"

#include <QVariantList>
#include <array>
#include <map>
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
  return fault.at <= fault.steps.size() && fault.steps[fault.at - 1].size >= kHeader ? -3 : -2;
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
  for (std::size_t index = 1; index <= last; ++index) {
    if (CodeAt(fault, index) != kFine) return false;
  }
  return true;
}

Lines Error(const std::string& text) {
  return {"error: " + text};
}
Lines Success(const std::string& text) {
  return {"success: " + text};
}
Lines Nothing(const Fault&) {
  return {};
}
std::string Must(bool holds, const char* what) {
  return holds ? std::string() : what;
}

// The network

Operation Connect() {
  Operation op{"connect", "Quenta", [](auto& bench) { bench.manager->ConnectLidar(); },
               [](const Fault& fault) {
                 // The second command makes up for the first, as long as the sensor is in step.
                 const bool second = fault.kind != "late" && fault.kind != "close";
                 if (CodeOf(kQuery, fault) == kFine || (fault.at == 2 && second)) return Lines{};
                 return Lines{"error: Connection Failed. Please check your network settings.",
                              "ERROR Connection Error: Lidar has No KTC reply."};
               }};
  op.points = {{"*"}, {"0x07"}, {"0x08", "", "0x07=error"}};
  op.connects = true;
  return op;
}

/// Its answer is what it tells.
Operation Probe() {
  Operation op = Connect();
  op.name = "probe";
  op.connects = false;
  op.start = [](auto& bench) { bench.manager->CheckConnectionInBackground(); };
  op.expected = [connected = op.expected](auto& fault) {
    return connected(fault).empty() ? Success("") : Lines();
  };
  op.over = [](auto& bench) {
    if (bench.ended > 0 && std::exchange(bench.alive, false)) bench.told = Success("");
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
  Operation op{"refresh", "Quenta",
               [](auto& bench) {
                 bench.rounds = 0;
                 bench.manager->setModuleIndexUse(1);
               },
               Nothing};
  op.over = [](auto& bench) {
    if (bench.rounds > 1) bench.manager->setModuleIndexUse(-1);
    return bench.rounds > 1;
  };
  return op;
}

struct Edit {
  const char* var_name;
  const char* text;
};

/// `reads` exchanges bring the page up to date, then the commands go out.
Operation Save(const char* name, int page, std::vector<Edit> edits, std::size_t reads,
               std::vector<std::string> commands) {
  Operation op{
      name, "Quenta",
      [page, edits](auto& bench) {
        for (const Edit& edit : edits) bench.Edit(edit.var_name, edit.text);
        if (edits.empty()) bench.manager->SetMultiFovConfig(0, QStringLiteral("10"));
        bench.manager->RunInBackground(page);
      },
      [reads, commands](const Fault& fault) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
          const int code = CodeAt(fault, reads + i + 1);
          const std::string& command = commands[i];
          if (code == kFine || (command == "0x21" && code == -2)) continue;
          if (command == "0x22") return Error("Set Failed: set channel fov failed");
          return Lines{"WARNING SET [" + command + "] FAILED", "error: SET [" + command + "] FAILED",
                       "error: Set Failed: " + command + " SET  ret_code: " + std::to_string(code)};
        }
        return Success(
            "Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you will "
            "need to restart the lidar for it to work.");
      }};
  op.check = [edits, commands](auto& bench, bool success) {
    bool marked = bench.manager->getSetMapSize() == (success ? 0 : static_cast<int>(commands.size()));
    for (const Edit& edit : edits) marked &= bench.IsEdited(edit.var_name) != success;
    return Must(marked, "the marks of unsaved edits are wrong");
  };
  return op;
}

constexpr char kKtcConsole[] = "Query ktc command fail. Please input right ktc command header and payload.";
constexpr char kTunnelConsole[] =
    "Query Serial command fail. Please check BytesFlow in Log Window. Please input right Serial command "
    "header "
    "and payload.";
constexpr char kLineConsole[] =
    "Query Serial command fail. Please input right Serial command header and payload.";

/// A console shows a refusal that a serial frame brings as it shows any other reply.
Operation Console(std::string model, const char* command, const char* payload, std::string failed,
                  std::vector<Point> points, Way way) {
  const bool any_reply = way == kGet || way == kLine;
  Operation op{"console",
               std::move(model),
               [=](auto& bench) { bench.manager->SendCommandInBackground(command, payload); },
               [=](const Fault& fault) {
                 const bool shown = any_reply && (fault.kind == "wrong-echo" || fault.kind == "error");
                 return shown || CodeOf(way, fault) == kFine ? Lines{} : Error(failed);
               },
               std::move(points),
               way == kQuery ? 4000U : 5000U};
  op.check = [](auto& bench, bool success) {
    return Must(bench.manager->getSendKtcCommandReturnHeader().isEmpty() != success,
                "the shown reply is wrong");
  };
  return op;
}

Operation Restart(bool reset) {
  const std::string ending = reset ? "." : ". Please reboot lidar manually.";
  Operation op{reset ? "reset" : "restart", "Quenta",
               [reset](auto& bench) {
                 reset ? bench.manager->ResetInBackground() : bench.manager->RestartInBackground();
               },
               [=](const Fault& fault) {
                 const int code = CodeOf(kCode, fault);
                 const std::string failed = reset ? "Reset failed" : "Auto reboot failed";
                 return code == kFine ? Lines{}
                                      : Error(failed + ", ret_code: " + std::to_string(code) + ending);
               }};
  op.restarts = true;
  op.disconnects = reset ? Ends::kNever : Ends::kOnSuccess;
  return op;
}

std::string WholeFile(Bench& bench, bool success) {
  return Must(bench.files() == (success ? 1U : 0U), "a file that is not whole, or none");
}

Operation Download(const std::string& log) {
  Operation op{"download " + log, "Quenta",
               [log](auto& bench) {
                 const QUrl folder = QUrl::fromLocalFile(bench.folder.path());
                 bench.manager->DownloadLog(folder, QString::fromStdString(log));
               },
               [log](const Fault& fault) {
                 const int code = CodeOf(kQuery, fault);
                 return code == kFine ? Success(log + " download successful.")
                                      : Error(log + " download failed. return code: " + std::to_string(code));
               }};
  op.check = WholeFile;
  return op;
}

Operation OperationLog() {
  Operation op{"operation log", "Quenta",
               [](auto& bench) { bench.manager->DownloadOperationLog(bench.File("log.tar")); },
               [](const Fault& fault) {
                 return IsFineTo(fault, fault.steps.size()) ? Success("Operation log download successful.")
                                                            : Error("Operation log download failed.");
               }};
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
  Operation op{
      name,
      model,
      std::move(start),
      [](const Fault& fault) {
        if (!IsFineTo(fault, kPieces)) return Error("Upgrade package transfer failed or is terminated.");
        Lines lines = Success(
            "Upgrade package transmitted successfully. The lidar will automatically reboot within 10 "
            "seconds.");
        const int code = fault.at > kPieces ? CodeOf(kCode, fault) : kFine;
        if (code == kFine) return lines;
        lines.push_back("error: Auto reboot failed, ret_code: " + std::to_string(code) +
                        ". Please reboot lidar manually.");
        lines.emplace_back("error: Auto reboot failed. Please reboot lidar manually.");
        return lines;
      },
      std::move(points),
      60000};
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

/// A frame that is disturbed once is sent again, but for a refusal and a broken line.
bool Heals(const Fault& fault) {
  return fault.kind != "error" && fault.kind != "close";
}

Operation SerialUpgrade(const char* model, std::vector<Point> points, Way way) {
  Operation op{
      "zelto upgrade",
      model,
      [](auto& bench) { bench.manager->ZeltoUpgradeLidar(bench.Package(kFirmware)); },
      [points, way](const Fault& fault) {
        const bool once = !points[fault.at - 1].nth.empty();
        const int code = once && Heals(fault) ? kFine : CodeOf(way, fault);
        if (code == kUnknown) return kUntellable;
        return code == kFine
                   ? Success("Upgrade package transmitted successfully. The lidar will automatically reboot.")
                   : Error("Upgrade package transfer failed or is terminated. error:" + std::to_string(code));
      },
      points,
      way == kOtaLine ? 30000U : 5000U};
  op.disconnects = Ends::kAlways;
  op.check = [](auto& bench, bool success) { return Arrived(bench, success, 1); };
  return op;
}

Lines MarvoTold(const Fault& fault) {
  enum : std::size_t { kFirstRate = 1, kMode, kSecondRate, kStart, kData, kEnd, kLastEnd };
  const std::string prefix = "Marvo upgrade: ";
  int code = CodeOf(kOtaCarried, fault);
  std::string failed = "BMB_APP_B failed, error=";
  if (fault.at == kFirstRate || fault.at == kSecondRate) {
    code = CodeOf(kCode, fault);
    failed = fault.at == kFirstRate ? "set baudrate failed" : "set upgrade baudrate failed";
  } else if (fault.at == kMode) {
    code = CodeOf(kSet, fault);
    // A refusal has the form of another partition; the sensor is not ready then.
    failed = fault.kind == "error" ? "BMB_APP_A failed, error=9" : "change mode failed";
  } else {
    if ((fault.at == kData || fault.at == kLastEnd) && Heals(fault)) code = kFine;
    if (fault.at == kLastEnd) failed = "TMB_PARAM failed, error=";
    failed += std::to_string(code);
  }
  if (code == kUnknown) return kUntellable;
  if (code == kFine) return Success("Marvo upgrade completed. The lidar will automatically reboot.");
  return Error(prefix + failed);
}

Operation MarvoUpgrade() {
  static const std::vector<std::uint8_t> package = SampleMarvoPackage("full");
  Operation op{"marvo upgrade",
               "Marvo-KTC",
               [](auto& bench) { bench.manager->MarvoUpgradeLidar(bench.Package(package)); },
               MarvoTold,
               {{"0x00013900", "#1"},
                {"ldcmd-set:12"},
                {"0x00013900", "#2"},
                {"ota:17"},
                {"ota:18", "#3"},
                {"ota:19"},
                {"ota:19", "#4"}},
               5000};
  op.disconnects = Ends::kOnSuccess;
  op.check = [](auto& bench, bool success) { return Arrived(bench, success, 4); };
  return op;
}

// Small sensors

constexpr char kTunnelled[] = "0x0002244C";  ///< what every serial command begins with inside KTC
constexpr char kSerialNumber[] = "Zelto-KTC get SN failed, ret:";

/// The baud rate that goes out need not be answered.
Operation SmallConnect(const char* model) {
  Operation op{"connect", model,         [](auto& bench) { bench.manager->ConnectLidar(); },
               Nothing,   {{"*", "#1"}}, 5000};
  op.connects = true;
  return op;
}

/// What is asked in the background after a connection.
Operation Info(const char* model, Point point, std::string prefix, Way way) {
  Operation op = SmallConnect(model);
  op.name = "information";
  op.points = {std::move(point)};
  if (way == kLine) op.patience_ms = 1000;
  op.expected = [prefix, way](const Fault& fault) {
    const int code = CodeOf(way, fault);
    if (code == kFine) return Lines{};
    Lines lines = {"ERROR " + prefix + std::to_string(code)};
    if (prefix != kSerialNumber) return lines;
    if (fault.kind == "error") return Lines{"ERROR Zelto-KTC SN invalid after validation"};  // it is empty
    if (fault.kind == "close") lines.push_back("ERROR " + prefix + "-1");  // the next round's
    return lines;
  };
  op.info = prefix == kSerialNumber ? "Zelto-KTC" : prefix;
  op.over = [](auto& bench) { return bench.pbl_queries > 0 || !bench.told.empty(); };
  if (op.model == "Marvo-KTC") op.over = {};
  return op;
}

struct Function {
  const char* name;
  QVariantList arguments;
  const char* command;
  std::string prefix;
  Way way;
  std::string success{};
};

/// A fault makes a notice and a log line.
Operation Call(const Function& function, const char* command, Way way) {
  Operation op{function.name,
               "Marvo-KTC",
               [function](auto& bench) {
                 QVariantList arguments = function.arguments;
                 if (arguments.value(0) == QLatin1String("FILE"))
                   arguments[0] = bench.File("file").toLocalFile();
                 bench.manager->CallInBackground(QLatin1String(function.name), arguments);
               },
               [=](const Fault& fault) {
                 int code = CodeOf(way, fault);
                 if (command == std::string("0x08") && fault.kind == "less")
                   code = -2;  // no room for the port
                 if (command == std::string("0x08") && fault.kind == "close") code = -3;  // half of 18 bytes
                 if (code == kFine) return function.success.empty() ? Lines{} : Success(function.success);
                 const std::string text = function.prefix + std::to_string(code);
                 return Lines{"error: " + text, "ERROR " + text};
               },
               {{command}},
               5000};
  op.check = [](auto& bench, bool ok) { return Must(ok || bench.files() == 0, "a file is left"); };
  return op;
}

const std::vector<Function> kFunctions = {
    {"ZeltoSetStandby", {1}, "ldcmd-set:11", "set lidar mode error, ret:", kSet},
    {"ZeltoSetSpinRate", {20}, "ldcmd-set:10", "set lidar spin rate error, ret:", kSet},
    {"ZeltoSetReturnMode", {1}, "ldcmd-set:9", "set lidar return mode error, ret:", kSet},
    {"ZeltoGetCorrection", {"FILE"}, "ldcmd-get:7", "get calibration error, ret:", kGet},
    {"ZeltoGetLidarFunctionSafety", {}, "ldcmd-get:8", "get function safety error, ret:", kGet},
    {"MarvoSetIMURange",
     {5, 3},
     "ldcmd-get:11",
     "set IMU range error, ret:",
     kGet,
     "IMU range set successfully"},
    {"ZeltoGetBaudRate", {}, "0xFF", "get baud rate error, ret:", kCode},
    {"ZeltoSetBaudRateFromUI",
     {"115200"},
     "0x00013900",
     "set baud rate error, ret:",
     kCode,
     "set baud rate successful"},
    {"ZeltoGetDestinationConfig", {}, "0x08", "get destination config error, ret:", kCode},
    {"ZeltoSetDestinationIPandPort",
     {"10.0.0.5", 2000},
     "0x20",
     "set destination IP and port error, ret:",
     kCode,
     "set destination IP and port successful"},
};

}  // namespace

std::vector<Operation> Operations() {
  const std::vector<Point> frames = {{"ota:1"}, {"ota:2"}, {"ota:2", "#2"}, {"ota:3"}};
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
      Console("Quenta", "0x07", "", kKtcConsole, {}, kQuery),
      Restart(false),
      Restart(true),
      Download("Fault Log"),
      Download("Event Log"),
      OperationLog(),
      NetworkUpgrade("upgrade", "Quenta", {},
                     [](auto& bench) { bench.manager->UpgradeLidar(bench.Package(kFirmware), 6, 1, 0); }),
      SmallConnect("Zelto-KTC"),
      SmallConnect("Marvo-KTC"),
      Info("Zelto-KTC", {"ldcmd-get:10"}, kSerialNumber, kGet),
      Info("Zelto-KTC", {"ldcmd-get:15"}, "get pbl version error, ret:", kGet),
      Info("Marvo-KTC", {"ldcmd-get:15", "#1"}, "Failed to get BMB FPGA version, ret:", kGet),
      Info("Marvo-KTC", {"ldcmd-get:15", "#3"}, "Failed to get BMB MCU version, ret:", kGet),
      Console("Zelto-KTC", "02", "08", kTunnelConsole, {{"ldcmd-get:8"}}, kGet),
      Console("Zelto-KTC", "02", "08", kTunnelConsole, {{kTunnelled}}, kTunnel),
      SerialUpgrade("Zelto-KTC", frames, kOtaCarried),
      SerialUpgrade("Zelto-KTC", {{kTunnelled}}, kOtaTunnel),
      NetworkUpgrade("junction box", "Marvo-KTC", {{"0x83", "#1"}, {"0x83", "#2"}, {"0x83", "#3"}, {"0x10"}},
                     [](auto& bench) {
                       bench.manager->ZeltoSetUpgradeMode(2);
                       bench.manager->ZeltoUpgradeLidar(bench.Package(kFirmware));
                     }),
      MarvoUpgrade(),
      Info("Zelto", {"ldcmd-get:10"}, kSerialNumber, kLine),
      Info("Zelto", {"ldcmd-get:15"}, "get pbl version error, ret:", kLine),
      Console("Zelto", "02", "08", kLineConsole, {{"ldcmd-get:8"}}, kLine),
      SerialUpgrade("Zelto", frames, kOtaLine),
  };
  for (const Function& function : kFunctions) {
    all.push_back(Call(function, function.command, function.way));
    if (function.way != kCode) all.push_back(Call(function, kTunnelled, kTunnel));
  }
  return all;
}

}  // namespace varkel::test
