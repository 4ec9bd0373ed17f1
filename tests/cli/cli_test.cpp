#include <gtest/gtest.h>

#ifndef _WIN32
#include "libquarn/Platform/src/pseudo_terminal.h"
#endif
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <array>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "simulator/src/replay.h"
#include "simulator/src/simulated_sensor.h"
#include "tests/support/qt_files.h"

namespace varkel {
namespace {

using sim::SimulatedSensor;

constexpr char kTable[] = "./Config/varID/Quenta.csv";

struct Outcome {
  int exit = -1;
  QByteArray output;
  QByteArray error;
};

std::unique_ptr<QProcess> Start(const QStringList& arguments) {
  auto process = std::make_unique<QProcess>();
  process->setStandardInputFile(QProcess::nullDevice());
  int attempts = 3;  // Wine sometimes fails to start a program
  do {
    process->start(QStringLiteral(VARKELCTL), arguments);
  } while (!process->waitForStarted() && --attempts > 0);
  return process;
}

/// The outcome with "\n" at the ends of its lines, whatever the system writes there.
Outcome Finish(QProcess& process) {
  EXPECT_TRUE(process.waitForFinished(60000));
  return {process.exitCode(), process.readAllStandardOutput().replace("\r\n", "\n"),
          process.readAllStandardError().replace("\r\n", "\n")};
}

Outcome RunProgram(const QStringList& arguments) {
  return Finish(*Start(arguments));
}

/// A simulated sensor, and the program run against it.
struct Fixture {
  Fixture() { sensor.Start(); }
  QString host() const { return QStringLiteral("127.0.0.1:%1").arg(sensor.port()); }
  QStringList Args(const QStringList& arguments) const {
    return QStringList{"--host", host(), "--timeout", "1000"} + arguments;
  }
  Outcome operator()(const QStringList& arguments) const { return RunProgram(Args(arguments)); }

  SimulatedSensor sensor{{.table_path = kTable}};
  QTemporaryDir folder;
};

/// The place where the value does not match the schema; empty if it matches.
std::string Violation(const QJsonValue& value, const QJsonValue& schema, const std::string& place) {
  static const std::map<QString, QJsonValue::Type> types = {
      {"string", QJsonValue::String}, {"number", QJsonValue::Double}, {"boolean", QJsonValue::Bool}};
  if (schema.isString()) return value.type() == types.at(schema.toString()) ? std::string() : place;
  if (schema.isArray()) {
    if (!value.isArray()) return place;
    for (const QJsonValue element : value.toArray()) {
      std::string fault = Violation(element, schema.toArray().first(), place + "[]");
      if (!fault.empty()) return fault;
    }
    return {};
  }
  if (!value.isObject()) return place;
  const QJsonObject object = value.toObject();
  const QJsonObject properties = schema["properties"].toObject();
  for (const QJsonValue key : schema["required"].toArray()) {
    if (!object.contains(key.toString())) return place + "." + key.toString().toStdString() + " is missing";
  }
  for (const QString& key : object.keys()) {
    if (!properties.contains(key)) return place + "." + key.toStdString() + " is unknown";
    std::string fault = Violation(object[key], properties[key], place + "." + key.toStdString());
    if (!fault.empty()) return fault;
  }
  return {};
}

/// The manual's schema with that name.
QJsonObject Schema(const char* schema) {
  for (const QByteArray& block :
       Content(QStringLiteral(VARKELCTL_MANUAL)).replace("```json", "\x01").split('\x01')) {
    QJsonObject found = QJsonDocument::fromJson(block.left(block.indexOf("```"))).object();
    if (found["schema"].toString() == QLatin1String(schema)) return found;
  }
  ADD_FAILURE() << "no schema " << schema;
  return {};
}

/// The single line of output as an object, checked against the schema.
QJsonObject Checked(const Outcome& outcome, const char* schema) {
  EXPECT_EQ(outcome.output.count('\n'), 1) << outcome.output.toStdString();
  QJsonObject object = QJsonDocument::fromJson(outcome.output).object();
  EXPECT_EQ(Violation(object, Schema(schema), schema), "") << outcome.output.toStdString();
  return object;
}

TEST(Cli, JsonFitsTheManual) {
  Fixture fixture;
  fixture.sensor.AddFault("0x0C=error:9");
  const QJsonObject read = Checked(fixture({"--json", "read", "--all"}), "read");
  EXPECT_EQ(read["sn"].toString(), "QU64A2419C0087");
  EXPECT_EQ(read["failed"][0]["code"].toInt(), 9);
  Checked(fixture({"--json", "watch", "SN", "--count", "1"}), "read");
  const QJsonObject set = Checked(fixture({"set", "Spin Rate=300", "--json"}), "change");
  EXPECT_EQ(set["changes"][0]["verdict"].toString(), "verified");
  EXPECT_TRUE(QFile::exists(set["snapshot"].toString()));
  const QJsonObject refused = Checked(fixture({"--json", "set", "Spin Rate=5"}), "change");
  EXPECT_FALSE(refused["ok"].toBool());
  Checked(fixture({"--json", "rollback"}), "change");
  EXPECT_EQ(fixture.sensor.ValueText("Spin Rate"), "600");
  EXPECT_GT(Checked(fixture({"--json", "compare", "--defaults"}), "compare")["differences"].toArray().size(),
            0);
}

TEST(Cli, WorksOnTablesAlone) {
  const QTemporaryDir folder;
  const auto table = [&folder](const char* name, const char* from, const char* to) {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(Content(QString(kTable)).replace(from, to));
    return file.fileName();
  };
  const QString warned = table("warned.csv", "Motor Current", "Motor Speed");
  const QString wrong = table("wrong.csv", "uint16,412", "uint24,412");
  const struct {
    QStringList arguments;
    int exit;
    const char* output;
  } cases[] = {
      {{"table"}, 64, ""},
      {{"table", "lint", "Quenta"}, 0, "no findings"},
      {{"table", "lint", warned}, 2, "VarName: warning: \"Motor Speed\" (5-3)"},
      {{"table", "lint", wrong}, 1, "VarType: error: \"Motor Current\" (5-3)"},
      {{"table", "lint", "No Such"}, 1, "can't be opened"},
      {{"table", "reference", "Quenta", "-o", folder.filePath("a.html")}, 0, "a.html has been written"},
      {{"table", "reference", "Quenta", "-o", folder.filePath("a.pdf")}, 64, ""},
      {{"table", "reference", "No Such", "-o", folder.filePath("a.md")}, 1, ""},
      {{"table", "dissector", "-o", folder.filePath("a.lua")}, 0, "a.lua has been written"},
      {{"table", "dissector", "Quenta", "-o", folder.path()}, 1, ""},
  };
  for (const auto& c : cases) {
    const Outcome outcome = RunProgram(c.arguments);
    EXPECT_EQ(outcome.exit, c.exit) << c.arguments.join(' ').toStdString() << outcome.error.toStdString();
    EXPECT_TRUE(outcome.output.contains(c.output)) << outcome.output.toStdString();
  }
  EXPECT_TRUE(Content(folder.filePath("a.lua")).contains("key = \"marvo_ktc\""));
  const QJsonObject lint = Checked(RunProgram({"--json", "table", "lint", wrong}), "lint");
  EXPECT_EQ(lint["findings"][0]["column"].toString(), "VarType");
}

TEST(Cli, ExitCodesMatchTheOutcome) {
  Fixture fixture;
  const QString file = fixture.folder.filePath("s.json");
  const struct {
    const char* fault;
    QStringList arguments;
    int exit;
  } cases[] = {
      {"", {"info"}, 0},
      {"", {"read", "SN"}, 0},
      {"", {"read"}, 64},
      {"", {"read", "No Such"}, 1},
      {"", {"read", "Restart"}, 1},
      {"", {"frobnicate"}, 64},
      {"", {"restart"}, 64},
      {"", {"snapshot", "-o", file}, 0},
      {"", {"compare", file}, 0},
      {"", {"compare", file, file}, 0},
      {"", {"compare", file + "x"}, 1},
      {"", {"set", "Spin Rate=1200", "--check"}, 2},
      {"", {"set", "Spin Rate=1200"}, 0},
      {"", {"set", "Spin Rate=1200", "--check"}, 0},
      {"", {"compare", file}, 2},
      {"", {"apply", file, "--page", "Network", "--check"}, 0},
      {"", {"apply", file, "--page", "No Such"}, 1},
      {"", {"--host", "127.0.0.1:1", "snapshot", "-o", file}, 64},
      {"", {"apply", file}, 0},
      {"0x41=error:7", {"set", "Spin Rate=300"}, 3},
      {"0x45=clamp:40", {"set", "Sync Angle=45"}, 3},
      {"0x0C=error:9", {"read", "--page", "Device Info"}, 3},
      {"0x41=close:0", {"set", "Spin Rate=300"}, 4},
      {"", {"send", "zz"}, 64},
      {"", {"send", "07"}, 0},
      {"0x62=error:3", {"log", "Fault Log", "-o", fixture.folder.path()}, 1},
      {"", {"log", "Fault Log", "-o", fixture.folder.path()}, 0},
      {"", {"upgrade", file + "x"}, 1},
      {"", {"--model", "Zelto-KTC", "read", "--all"}, 1},
      {"", {"restart", "--yes"}, 0},
  };
  for (const auto& [fault, arguments, exit] : cases) {
    fixture.sensor.ClearFaults();
    if (*fault != '\0') fixture.sensor.AddFault(fault);
    const Outcome outcome = fixture(arguments);
    EXPECT_EQ(outcome.exit, exit) << arguments.join(' ').toStdString() << ": " << outcome.output.toStdString()
                                  << outcome.error.toStdString();
    EXPECT_EQ(outcome.output.isEmpty() && outcome.error.isEmpty(), false)
        << arguments.join(' ').toStdString();
  }
  EXPECT_EQ(fixture.sensor.restarts(), 1U);
}

TEST(Cli, ResultsComeInTheOrderOfTheSensors) {
  Fixture first;
  Fixture second;
  first.sensor.AddFault("*=late:30");
  const QString targets = first.folder.filePath("targets.csv");
  Put(targets, QStringLiteral("label,host,port\nslow,127.0.0.1,%1\nnobody,127.0.0.1,1\nquick,127.0.0.1,%2\n")
                   .arg(first.sensor.port())
                   .arg(second.sensor.port())
                   .toUtf8());
  const Outcome outcome = RunProgram({"--targets", targets, "--json", "read", "SN"});
  EXPECT_EQ(outcome.exit, 4);
  QStringList names;
  for (const QByteArray& line : outcome.output.trimmed().split('\n')) {
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    names += object["target"].toString() + (object["ok"].toBool() ? " ok" : " failed");
  }
  EXPECT_EQ(names, (QStringList{"slow ok", "nobody failed", "quick ok"}));
  EXPECT_EQ(outcome.error, "3 sensors: 2 done; no connection: nobody\n");

  RunProgram({"--targets", targets, "snapshot", "-o", second.folder.path()});
  EXPECT_EQ(QDir(second.folder.path()).entryList(QDir::Files).size(), 2)
      << "both have the same serial number";

  Put(targets, "host,port\n127.0.0.1,no\n");
  EXPECT_EQ(RunProgram({"--targets", targets, "info"}).exit, 64);
}

#ifndef _WIN32  // where another process can send Ctrl+C
TEST(Cli, CtrlCEndsWithinASecondAndReportsWhatWasWritten) {
  Fixture fixture;
  fixture.sensor.AddFault("0x45=silence");
  const auto process = Start({"--host", fixture.host(), "--timeout", "20000", "set", "Spin Rate=300",
                              "Sync Angle=45", "GPS UDP Port=2000"});
  ASSERT_TRUE(fixture.sensor.WaitReceived(0x45, 1, std::chrono::seconds(20)));
  QElapsedTimer timer;
  timer.start();
  process->terminate();
  const Outcome outcome = Finish(*process);
  EXPECT_LT(timer.elapsed(), 1000);
  EXPECT_EQ(outcome.exit, 1);
  EXPECT_TRUE(outcome.output.contains("600 → 300 ✓")) << outcome.output.toStdString();
  EXPECT_TRUE(outcome.output.contains("90 → 45 ? sent, not confirmed"));
  EXPECT_TRUE(outcome.output.contains("10110 → 2000 – not sent"));
}

/// Runs the program with all its streams on a terminal, types `answer`, and returns what it printed there.
Outcome OnTerminal(const QStringList& arguments, const QByteArray& answer = {}, bool has_colours = true) {
  const auto terminal = quarn::platform::PseudoTerminal::Create();
  const QString name = QString::fromStdString(terminal->name());
  QProcess process;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  if (!has_colours) environment.insert("NO_COLOR", "1");
  process.setProcessEnvironment(environment);
  process.setStandardInputFile(name);
  process.setStandardOutputFile(name, QIODevice::Append);
  process.setStandardErrorFile(name, QIODevice::Append);
  process.start(QStringLiteral(VARKELCTL), arguments);
  Outcome outcome;
  if (!answer.isEmpty()) {
    terminal->Write({reinterpret_cast<const std::uint8_t*>(answer.data()), std::size_t(answer.size())},
                    1000000);
  }
  while (process.state() != QProcess::NotRunning || terminal->WaitReadable(0) > 0) {
    std::array<std::uint8_t, 4096> block;
    const int count = terminal->WaitReadable(10000) > 0 ? terminal->Read(block) : 0;
    if (count > 0) outcome.output.append(reinterpret_cast<const char*>(block.data()), count);
    process.waitForFinished(0);
  }
  outcome.exit = process.exitCode();
  return outcome;
}

TEST(Cli, AsksAndShowsColoursAndProgressOnATerminalOnly) {
  Fixture fixture;
  const Outcome refused = OnTerminal(fixture.Args({"reset"}), "n\n");
  EXPECT_EQ(refused.exit, 1);
  EXPECT_TRUE(refused.output.contains("Reset all settings of 1 sensor? [y/N]"))
      << refused.output.toStdString();
  EXPECT_EQ(fixture.sensor.restarts(), 0U);
  EXPECT_EQ(OnTerminal(fixture.Args({"restart"}), "y\n").exit, 0);
  EXPECT_EQ(fixture.sensor.restarts(), 1U);

  Fixture other;
  const QByteArray green = "\x1B[32m✓\x1B[0m";
  EXPECT_TRUE(OnTerminal(other.Args({"set", "Spin Rate=300"})).output.contains(green));
  EXPECT_FALSE(OnTerminal(other.Args({"set", "Spin Rate=600"}), {}, false).output.contains("\x1B[3"));
  EXPECT_FALSE(other({"set", "Spin Rate=300"}).output.contains('\x1B'));

  other.sensor.AddFault("*=late:60");
  const Outcome slow = OnTerminal(other.Args({"--json", "read", "--all"}));
  EXPECT_TRUE(slow.output.contains("\r\x1B[K[#")) << slow.output.left(500).toStdString();
  EXPECT_EQ(other({"read", "--all"}).error, "");
}
#endif

TEST(Cli, TextsFromASensorCantControlTheTerminal) {
  Fixture fixture;
  fixture.sensor.SetValue("PN", "\x1B[2Jx\xC2\x9B");
  const Outcome outcome = fixture({"read", "PN"});
  EXPECT_FALSE(outcome.output.contains('\x1B'));
  EXPECT_TRUE(outcome.output.contains("?[2Jx?"));
}

TEST(Cli, ARecordedSensorIsReplayedAndReadAgain) {
  Fixture fixture;
  fixture.sensor.SetValue("PN", "a part of its own");
  const QString file = fixture.folder.filePath("session.pcap");
  ASSERT_EQ(fixture({"--capture", file, "read", "SN", "PN", "--page", "Network"}).exit, 0);
  const Outcome original = fixture({"--json", "read", "SN", "PN", "--page", "Network"});

  std::ifstream recording(file.toStdString(), std::ios::binary);
  const auto replay = std::make_shared<sim::Replay>(recording, sim::Replay::Pace::kRecorded);
  const std::uint16_t port = fixture.sensor.port();
  fixture.sensor.Stop();
  SimulatedSensor replayed({.table_path = kTable, .port = port, .replay = replay});
  replayed.Start();
  const QString host = QStringLiteral("127.0.0.1:%1").arg(port);
  EXPECT_EQ(RunProgram({"--host", host, "--json", "read", "SN", "PN", "--page", "Network"}).output,
            original.output);
  EXPECT_TRUE(replay->Unrecorded().empty());
  EXPECT_EQ(RunProgram({"--host", host, "send", "52", "01"}).exit, 3);
  EXPECT_EQ(replay->Unrecorded(), std::vector<std::string>{"command 0x52, payload 01: once"});

  const Outcome shown = RunProgram({"capture", "show", file});
  EXPECT_EQ(shown.exit, 0) << shown.error.toStdString();
  EXPECT_TRUE(shown.output.contains("0x07 (read Model, PN and 5 more): ok"));
  EXPECT_TRUE(shown.output.contains("PN = a part of its own"));
  const Outcome json = RunProgram({"--json", "capture", "show", file});
  for (const QByteArray& line : json.output.trimmed().split('\n')) {
    EXPECT_EQ(Violation(QJsonDocument::fromJson(line).object(), Schema("exchange"), ""), "");
  }
  EXPECT_EQ(RunProgram({"capture", "show", file + "x"}).exit, 1);
  EXPECT_EQ(
      RunProgram({"--capture", fixture.folder.filePath("no/such.pcap"), "--host", host, "read", "SN"}).exit,
      1);
}

TEST(Cli, AnUpgradeWaitsUntilTheSensorIsBack) {
  Fixture fixture;
  const QString package = fixture.folder.filePath("new.patch");
  Put(package, "VARKEL-SIM FIRMWARE 9.8.7.6 2026-10-01\n" + QByteArray(5000, 'x'));
  const Outcome outcome = fixture({"upgrade", package});
  EXPECT_EQ(outcome.exit, 0) << outcome.error.toStdString();
  EXPECT_TRUE(outcome.output.contains("9.8.7.6 (2026-10-01)")) << outcome.output.toStdString();
}

}  // namespace
}  // namespace varkel
