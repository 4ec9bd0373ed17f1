#include "tests/faults/fault_table.h"

#include <QVariantList>
#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "tests/core/marvo_sample.h"

namespace varkel::test {

namespace {

using Ends = Operation::Ends;

constexpr int kFine = 1;
constexpr int kHalf = 2;     ///< half of the reply came: with the header or within it
constexpr int kUnknown = 3;  ///< hangs on fractions of a second

/// What a failed exchange is reported with.
enum Way : std::size_t {
  kQuery,   ///< the client's last return code
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
      {"none", {kFine, kFine, kFine, kFine, kFine, kFine, kFine, kFine, kFine}},
      {"slow", {kFine, kFine, kFine, kFine, kFine, kFine, kFine, kFine, kFine}},
      {"split", {kFine, kFine, kFine, kFine, kFine, kFine, kFine, kFine, kFine}},
      {"noise", {kFine, kFine, kFine, -2, -2, kFine, kFine, -2, kFine}},
      {"late", {-2, -2, -3, -3, -3, -2, kUnknown, kUnknown, kUnknown}},
      {"wrong-echo", {0, -1, -2, -2, -2, -2, -2, -2, -2}},
      {"error", {7, 7, 7, 7, -2, -2, 7, 7, 7}},
      {"more", {-3, -3, -3, -2, -2, -2, -3, -2, -2}},
      {"less", {kFine, kFine, -2, -2, -2, -2, -2, -2, -2}},
      {"silence", {-2, -2, -3, -3, -3, -2, -3, -3, -2}},
      {"close", {kHalf, kHalf, -3, -3, -3, -3, -1, -1, -1}},
  };
  const int code = codes.at(fault.kind)[way];
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

std::optional<Lines> NothingTold(const Fault&) {
  return Lines{};
}

std::string Must(bool holds, const char* what) {
  return holds ? std::string() : what;
}

// The network

struct Edit {
  const char* var_name;
  const char* text;
};

Operation Connect() {
  return {.name = "connect",
          .model = "Quenta",
          .start = [](FaultBench& bench) { bench.manager->ConnectLidar(); },
          .expected = [](const Fault& fault) -> std::optional<Lines> {
            // The second command makes up for the first, as long as the sensor is in step.
            const bool second = fault.kind != "late" && fault.kind != "close";
            if (CodeOf(kQuery, fault) == kFine || (fault.at == 2 && second)) return Lines{};
            return Lines{"error: Connection Failed. Please check your network settings.",
                         "ERROR Connection Error: Lidar has No KTC reply."};
          },
          .points = {{"*"}, {"0x07"}, {"0x08", "", "0x07=error"}},
          .connects = true,
          .over = [](FaultBench& bench) { return bench.manager->IsConnected() || !bench.told.empty(); }};
}

Operation Probe() {
  Operation probe = Connect();
  probe.name = "probe";
  probe.start = [](FaultBench& bench) { bench.manager->CheckConnectionInBackground(); };
  const auto connected = probe.expected;
  probe.expected = [connected](const Fault& fault) -> std::optional<Lines> {
    return connected(fault)->empty() ? Success("") : Lines{};
  };
  probe.connects = false;
  probe.over = [](FaultBench& bench) {
    // The answer is what it tells.
    if (bench.ended > 0 && std::exchange(bench.alive, false)) bench.told.emplace_back("success: ");
    return bench.ended > 0;
  };
  return probe;
}

Operation ReadPage(int page) {
  return {.name = "page " + std::to_string(page),
          .model = "Quenta",
          .start = [page](FaultBench& bench) { bench.manager->ReadPageInBackground(page); },
          .expected = NothingTold,
          .check =
              [page](FaultBench& bench, bool) {
                std::string wrong;
                const QVariantList groups = bench.manager->myMap()[page].toList();
                for (int group = 0; group < groups.size(); ++group) {
                  const QVariantList vars = groups[group].toList();
                  for (int index = 0; index < vars.size(); ++index) {
                    const QVariantMap var = vars[index].toMap();
                    const std::string name = var.value(QStringLiteral("var_name")).toString().toStdString();
                    const std::string text =
                        var.value(QStringLiteral("current_val")).toString().toStdString();
                    // Nothing but the table's default and the sensor's value, which are the same.
                    if (!bench.manager->isTimerUpdate(page, group, index) &&
                        text != bench.sensor->ValueText(name)) {
                      wrong += name + " shows " + text + ". ";
                    }
                  }
                }
                return wrong;
              }};
}

Operation Refresh() {
  return {.name = "refresh",
          .model = "Quenta",
          .start =
              [](FaultBench& bench) {
                bench.rounds = 0;
                bench.manager->setModuleIndexUse(1);
              },
          .expected = NothingTold,
          .over =
              [](FaultBench& bench) {
                if (bench.rounds < 2) return false;
                bench.manager->setModuleIndexUse(-1);
                return true;
              }};
}

/// `reads` exchanges bring the page up to date, then the commands go out.
Operation Save(std::string name, int page, std::vector<Edit> edits, std::size_t reads,
               std::vector<std::string> commands) {
  return {
      .name = std::move(name),
      .model = "Quenta",
      .start =
          [page, edits](FaultBench& bench) {
            for (const Edit& edit : edits) bench.Edit(edit.var_name, edit.text);
            if (edits.empty()) bench.manager->SetMultiFovConfig(0, QStringLiteral("10"));
            bench.manager->RunInBackground(page);
          },
      .expected = [reads, commands](const Fault& fault) -> std::optional<Lines> {
        Lines lines;
        for (std::size_t i = 0; i < commands.size(); ++i) {
          const int code = CodeAt(fault, reads + i + 1);
          const std::string& command = commands[i];
          if (code == kFine || (command == "0x21" && code == -2)) continue;
          if (command == "0x22") return Error("Set Failed: set channel fov failed");
          lines.insert(lines.end(),
                       {"WARNING SET [" + command + "] FAILED", "error: SET [" + command + "] FAILED",
                        "error: Set Failed: " + command + " SET  ret_code: " + std::to_string(code)});
          return lines;
        }
        lines.emplace_back(
            "success: Set Lidar Successfully\nNote that if you have changed the TCP-related settings, you "
            "will need to restart the lidar for it to work.");
        return lines;
      },
      .check =
          [edits, commands](FaultBench& bench, bool success) {
            bool marked = bench.manager->getSetMapSize() == (success ? 0 : static_cast<int>(commands.size()));
            for (const Edit& edit : edits) marked &= bench.IsEdited(edit.var_name) != success;
            return Must(marked, "the marks of unsaved edits are wrong");
          }};
}

std::string ShownReply(FaultBench& bench, bool success) {
  return Must(bench.manager->getSendKtcCommandReturnHeader().isEmpty() != success,
              "the console shows a reply that did not come, or hides one");
}

Operation Console(std::string name, std::string model, const char* command, const char* payload,
                  std::string failed, std::vector<Point> points, std::function<int(const Fault&)> code,
                  unsigned patience_ms) {
  return {.name = std::move(name),
          .model = std::move(model),
          .start = [command,
                    payload](FaultBench& bench) { bench.manager->SendCommandInBackground(command, payload); },
          .expected = [code, failed](const Fault& fault) -> std::optional<Lines> {
            return code(fault) == kFine ? Lines{} : Error(failed);
          },
          .points = std::move(points),
          .patience_ms = patience_ms,
          .check = ShownReply};
}

Operation Restart(bool reset) {
  return {.name = reset ? "reset" : "restart",
          .model = "Quenta",
          .start =
              [reset](FaultBench& bench) {
                reset ? bench.manager->ResetInBackground() : bench.manager->RestartInBackground();
              },
          .expected = [reset](const Fault& fault) -> std::optional<Lines> {
            const int code = CodeOf(kCode, fault);
            if (code == kFine) return Lines{};
            const std::string digits = std::to_string(code);
            return Error(reset
                             ? "Reset failed, ret_code: " + digits + "."
                             : "Auto reboot failed, ret_code: " + digits + ". Please reboot lidar manually.");
          },
          .restarts = true,
          .disconnects = reset ? Ends::kNever : Ends::kOnSuccess};
}

std::string WholeFile(FaultBench& bench, bool success) {
  return Must(bench.files() == (success ? 1U : 0U), "a file that is not whole, or none");
}

Operation Download(const std::string& log) {
  return {.name = "download " + log,
          .model = "Quenta",
          .start =
              [log](FaultBench& bench) {
                bench.manager->DownloadLog(QUrl::fromLocalFile(bench.folder.path()),
                                           QString::fromStdString(log));
              },
          .expected = [log](const Fault& fault) -> std::optional<Lines> {
            const int code = CodeOf(kQuery, fault);
            return code == kFine ? Success(log + " download successful.")
                                 : Error(log + " download failed. return code: " + std::to_string(code));
          },
          .check = WholeFile};
}

Operation OperationLog() {
  return {.name = "operation log",
          .model = "Quenta",
          .start =
              [](FaultBench& bench) {
                bench.manager->DownloadOperationLog(bench.File(QStringLiteral("log.tar")));
              },
          .expected = [](const Fault& fault) -> std::optional<Lines> {
            return IsFineTo(fault, fault.steps.size()) ? Success("Operation log download successful.")
                                                       : Error("Operation log download failed.");
          },
          .alone = true,
          .check = WholeFile};
}

// Firmware

std::vector<std::uint8_t> Firmware() {
  std::vector<std::uint8_t> package(2500);
  for (std::size_t i = 0; i < package.size(); ++i) package[i] = static_cast<std::uint8_t>(i * 7);
  return package;
}

constexpr std::size_t kPieces = 3;

/// Pieces, then the restart; `name` also tells the way.
Operation NetworkUpgrade(std::string name, std::string model, std::vector<Point> points,
                         std::function<void(FaultBench&)> start) {
  return {.name = std::move(name),
          .model = std::move(model),
          .start = std::move(start),
          .expected = [](const Fault& fault) -> std::optional<Lines> {
            if (!IsFineTo(fault, kPieces)) return Error("Upgrade package transfer failed or is terminated.");
            Lines lines = Success(
                "Upgrade package transmitted successfully. The lidar will automatically reboot within 10 "
                "seconds.");
            const int code = fault.at > kPieces ? CodeOf(kCode, fault) : CodeAt(fault, kPieces + 1);
            if (code == kFine) return lines;
            lines.push_back("error: Auto reboot failed, ret_code: " + std::to_string(code) +
                            ". Please reboot lidar manually.");
            lines.emplace_back("error: Auto reboot failed. Please reboot lidar manually.");
            return lines;
          },
          .points = std::move(points),
          .patience_ms = 60000,
          .last_patience_ms = 5000,
          .restarts = true,
          .disconnects = Ends::kOnSuccess,
          .check =
              [](FaultBench& bench, bool success) {
                return Must(!success || bench.sensor->ReceivedPackage() == Firmware(),
                            "the package did not come");
              }};
}

Operation SerialUpgrade(std::string name, std::string model, std::vector<Point> points, Way way) {
  return {
      .name = std::move(name),
      .model = std::move(model),
      .start =
          [](FaultBench& bench) {
            bench.manager->ZeltoSetUpgradeMode(0);
            bench.manager->ZeltoUpgradeLidar(bench.Package(Firmware()));
          },
      .expected = [points, way](const Fault& fault) -> std::optional<Lines> {
        const bool once = !points[fault.at - 1].nth.empty();
        const bool healed = once && fault.kind != "error" && fault.kind != "close";
        const int code = healed ? kFine : CodeOf(way, fault);
        if (code == kUnknown) return std::nullopt;
        if (code == kFine) {
          return Success("Upgrade package transmitted successfully. The lidar will automatically reboot.");
        }
        return Error("Upgrade package transfer failed or is terminated. error:" + std::to_string(code));
      },
      .points = points,
      .patience_ms = way == kOtaLine ? 30000U : 5000U,
      .disconnects = Ends::kAlways,
      .check =
          [](FaultBench& bench, bool success) {
            const auto received =
                (bench.sensor ? bench.sensor->device() : bench.on_lines->device()).firmware.Received();
            return Must(!success || (received.size() == 1 && received.front().bytes == Firmware()),
                        "the package did not come");
          }};
}

Operation MarvoUpgrade() {
  enum : std::size_t { kFirstRate = 1, kMode, kSecondRate, kStart, kData, kEnd, kLastEnd };
  return {.name = "marvo upgrade",
          .model = "Marvo-KTC",
          .start =
              [](FaultBench& bench) {
                static const std::vector<std::uint8_t> package = SampleMarvoPackage("full");
                bench.manager->MarvoUpgradeLidar(bench.Package(package));
              },
          .expected = [](const Fault& fault) -> std::optional<Lines> {
            const std::string prefix = "Marvo upgrade: ";
            const Lines success = Success("Marvo upgrade completed. The lidar will automatically reboot.");
            const bool healed = fault.kind != "error" && fault.kind != "close";
            switch (fault.at) {
              case kFirstRate:
                return CodeOf(kCode, fault) == kFine ? success : Error(prefix + "set baudrate failed");
              case kMode:
                // A refusal has the form of another partition; the sensor is not ready then.
                if (fault.kind == "error") return Error(prefix + "BMB_APP_A failed, error=9");
                return CodeOf(kSet, fault) == kFine ? success : Error(prefix + "change mode failed");
              case kSecondRate:
                return CodeOf(kCode, fault) == kFine ? success
                                                     : Error(prefix + "set upgrade baudrate failed");
              case kData:
              case kLastEnd:
                if (healed) return success;
                break;
              default:
                break;
            }
            const int code = CodeOf(kOtaCarried, fault);
            if (code == kUnknown) return std::nullopt;
            if (code == kFine) return success;
            return Error(prefix + (fault.at == kLastEnd ? "TMB_PARAM" : "BMB_APP_B") +
                         " failed, error=" + std::to_string(code));
          },
          .points = {{"0x00013900", "#1"},
                     {"ldcmd-set:12"},
                     {"0x00013900", "#2"},
                     {"ota:17"},
                     {"ota:18", "#3"},
                     {"ota:19"},
                     {"ota:19", "#4"}},
          .patience_ms = 5000,
          .disconnects = Ends::kOnSuccess,
          .check =
              [](FaultBench& bench, bool success) {
                return Must(!success || bench.sensor->device().firmware.Received().size() == 4,
                            "the components did not come");
              }};
}

// Small sensors

constexpr char kTunnelled[] = "0x0002244C";  ///< what every serial command begins with inside KTC

Operation SmallConnect(std::string model) {
  return {.name = "connect " + model,
          .model = std::move(model),
          .start = [](FaultBench& bench) { bench.manager->ConnectLidar(); },
          .expected = NothingTold,
          .points = {{"*", "#1"}},
          .patience_ms = 5000,
          .connects = true,
          .over = [](FaultBench& bench) { return bench.manager->IsConnected(); }};
}

constexpr char kSerialNumberFailed[] = "Zelto-KTC get SN failed, ret:";

/// What is asked in the background after a connection.
Operation Info(std::string name, std::string model, Point point, std::string prefix, Way way) {
  const bool marvo = model == "Marvo-KTC";
  return {.name = std::move(name),
          .model = std::move(model),
          .start = [](FaultBench& bench) { bench.manager->ConnectLidar(); },
          .expected = [prefix, way](const Fault& fault) -> std::optional<Lines> {
            const int code = CodeOf(way, fault);
            if (code == kFine) return Lines{};
            const Lines lines = {"ERROR " + prefix + std::to_string(code)};
            if (prefix != kSerialNumberFailed) return lines;
            // An item without contents; a failure that changes is told again.
            if (fault.kind == "error") return Lines{"ERROR Zelto-KTC SN invalid after validation"};
            return fault.kind == "close" ? Lines{lines.front(), "ERROR " + prefix + "-1"} : lines;
          },
          .points = {std::move(point)},
          .patience_ms = way == kLine ? 1000U : 5000U,
          .connects = true,
          .info = prefix == kSerialNumberFailed ? "Zelto-KTC" : prefix,
          .over =
              [marvo](FaultBench& bench) {
                return bench.manager->IsConnected() && !bench.manager->GetIsConnectingLidar() &&
                       (marvo || bench.pbl_queries > 0);
              }};
}

/// A function of a small sensor by its name. A fault makes a notice and a log line.
Operation Function(const char* function, QVariantList arguments, Point point, std::string prefix, Way way,
                   std::string success = {}) {
  const bool short_reply = way == kCode && point.command == "0x08";
  return {
      .name = std::string(function) + " " + point.command,
      .model = "Marvo-KTC",
      .start =
          [function, arguments](FaultBench& bench) {
            QVariantList given = arguments;
            if (given.value(0) == QLatin1String("FILE")) {
              given[0] = bench.File(QStringLiteral("correction")).toLocalFile();
            }
            bench.manager->CallInBackground(QLatin1String(function), given);
          },
      .expected = [=](const Fault& fault) -> std::optional<Lines> {
        int code = CodeOf(way, fault);
        if (short_reply && fault.kind == "less") code = -2;   // no room for the port
        if (short_reply && fault.kind == "close") code = -3;  // half of 18 bytes
        if (code == kFine) return success.empty() ? Lines{} : Success(success);
        const std::string text = prefix + std::to_string(code);
        return Lines{"error: " + text, "ERROR " + text};
      },
      .points = {std::move(point)},
      .patience_ms = 5000,
      .check = [](FaultBench& bench, bool ok) { return Must(ok || bench.files() == 0, "a file is left"); }};
}

void AddFunctions(std::vector<Operation>& operations) {
  struct Row {
    const char* function;
    QVariantList arguments;
    const char* command;
    const char* prefix;
    Way way;
    const char* success;
  };
  const std::vector<Row> rows = {
      {"ZeltoSetStandby", {1}, "ldcmd-set:11", "set lidar mode error, ret:", kSet, ""},
      {"ZeltoSetSpinRate", {20}, "ldcmd-set:10", "set lidar spin rate error, ret:", kSet, ""},
      {"ZeltoSetReturnMode", {1}, "ldcmd-set:9", "set lidar return mode error, ret:", kSet, ""},
      {"ZeltoGetCorrection", {"FILE"}, "ldcmd-get:7", "get calibration error, ret:", kGet, ""},
      {"ZeltoGetLidarFunctionSafety", {}, "ldcmd-get:8", "get function safety error, ret:", kGet, ""},
      {"MarvoSetIMURange",
       {5, 3},
       "ldcmd-get:11",
       "set IMU range error, ret:",
       kGet,
       "IMU range set successfully"},
      {"ZeltoGetBaudRate", {}, "0xFF", "get baud rate error, ret:", kCode, ""},
      {"ZeltoSetBaudRateFromUI",
       {"115200"},
       "0x00013900",
       "set baud rate error, ret:",
       kCode,
       "set baud rate successful"},
      {"ZeltoGetDestinationConfig", {}, "0x08", "get destination config error, ret:", kCode, ""},
      {"ZeltoSetDestinationIPandPort",
       {"10.0.0.5", 2000},
       "0x20",
       "set destination IP and port error, ret:",
       kCode,
       "set destination IP and port successful"},
  };
  for (const Row& row : rows) {
    operations.push_back(
        Function(row.function, row.arguments, {row.command}, row.prefix, row.way, row.success));
    if (row.way == kCode) continue;
    operations.push_back(
        Function(row.function, row.arguments, {kTunnelled}, row.prefix, kTunnel, row.success));
  }
}

int Query(const Fault& fault) {
  return CodeOf(kQuery, fault);
}

/// The console shows a refusal as it shows any other reply.
template <Way way>
int AnyReply(const Fault& fault) {
  return fault.kind == "wrong-echo" || fault.kind == "error" ? kFine : CodeOf(way, fault);
}

}  // namespace

const std::vector<Operation>& Operations() {
  static const std::vector<Operation> operations = [] {
    const std::string serial_console =
        "Query Serial command fail. Please input right Serial command header and payload.";
    const std::string tunnel_console =
        "Query Serial command fail. Please check BytesFlow in Log Window. Please input right Serial command "
        "header and payload.";
    const std::string pbl = "get pbl version error, ret:";
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
        Console("console", "Quenta", "0x07", "",
                "Query ktc command fail. Please input right ktc command header and payload.", {}, Query,
                4000),
        Restart(false),
        Restart(true),
        Download("Fault Log"),
        Download("Event Log"),
        OperationLog(),
        NetworkUpgrade(
            "upgrade", "Quenta", {},
            [](FaultBench& bench) { bench.manager->UpgradeLidar(bench.Package(Firmware()), 6, 1, 0); }),

        SmallConnect("Zelto-KTC"),
        SmallConnect("Marvo-KTC"),
        Info("serial number", "Zelto-KTC", {"ldcmd-get:10"}, kSerialNumberFailed, kGet),
        Info("PBL version", "Zelto-KTC", {"ldcmd-get:15"}, pbl, kGet),
        Info("first version", "Marvo-KTC", {"ldcmd-get:15", "#1"},
             "Failed to get BMB FPGA version, ret:", kGet),
        Info("last version", "Marvo-KTC", {"ldcmd-get:15", "#3"},
             "Failed to get BMB MCU version, ret:", kGet),
        Console("console carried", "Zelto-KTC", "02", "08", tunnel_console, {{"ldcmd-get:8"}}, AnyReply<kGet>,
                5000),
        Console(
            "console tunnel", "Zelto-KTC", "02", "08", tunnel_console, {{kTunnelled}},
            [](const Fault& fault) { return CodeOf(kTunnel, fault); }, 5000),
        SerialUpgrade("zelto upgrade carried", "Zelto-KTC",
                      {{"ota:1"}, {"ota:2"}, {"ota:2", "#2"}, {"ota:3"}}, kOtaCarried),
        SerialUpgrade("zelto upgrade tunnel", "Zelto-KTC", {{kTunnelled}}, kOtaTunnel),
        NetworkUpgrade("junction box", "Marvo-KTC",
                       {{"0x83", "#1"}, {"0x83", "#2"}, {"0x83", "#3"}, {"0x10"}},
                       [](FaultBench& bench) {
                         bench.manager->ZeltoSetUpgradeMode(2);
                         bench.manager->ZeltoUpgradeLidar(bench.Package(Firmware()));
                       }),
        MarvoUpgrade(),

        Info("serial number", "Zelto", {"ldcmd-get:10"}, kSerialNumberFailed, kLine),
        Info("PBL version", "Zelto", {"ldcmd-get:15"}, pbl, kLine),
        Console("console lines", "Zelto", "02", "08", serial_console, {{"ldcmd-get:8"}}, AnyReply<kLine>,
                5000),
        SerialUpgrade("zelto upgrade", "Zelto", {{"ota:1"}, {"ota:2"}, {"ota:2", "#2"}, {"ota:3"}}, kOtaLine),
    };
    AddFunctions(all);
    return all;
  }();
  return operations;
}

}  // namespace varkel::test
