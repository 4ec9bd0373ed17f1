#include <QCoreApplication>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <chrono>
#include <future>
#include <iostream>
#include <map>

#include "VarkelCore/src/lidar_connection.h"
#include "simulator/src/simulated_sensor.h"
#include "simulator/src/simulated_small_sensor.h"
#include "tests/core/core_test.h"
#include "tests/core/marvo_sample.h"
#include "tests/core/small_sensor_bench.h"
#include "tests/endurance/figures.h"

namespace {

using varkel::sim::SimulatedSensor;
using varkel::sim::SimulatedSmallSensor;

constexpr double kAllowedMs = 1000;
// Waiting for a sensor takes four seconds or more; less is only a busy machine.
constexpr double kGoneMs = 3000;
constexpr int kPatienceMs = 120000;
constexpr char kLines[] = "Zelto";

constexpr const char* kOperations[] = {"Quenta connect",
                                       "Quenta page",
                                       "Quenta refresh",
                                       "Quenta save",
                                       "Quenta console",
                                       "Quenta restart",
                                       "Quenta reset",
                                       "Quenta log",
                                       "Quenta operation-log",
                                       "Quenta upgrade",
                                       "Zelto connect",
                                       "Zelto zelto-upgrade",
                                       "Zelto-KTC connect",
                                       "Zelto-KTC function",
                                       "Zelto-KTC zelto-upgrade",
                                       "Zelto-KTC box-upgrade",
                                       "Marvo-KTC connect",
                                       "Marvo-KTC function",
                                       "Marvo-KTC marvo-upgrade"};
constexpr const char* kEndings[] = {"close", "disconnect", "model", "reconnect"};
constexpr const char* kRules[] = {"*=none", "*=late:60", "*=silence", "*=close"};

/// Whatever goes on, the process of a tool that is closed ends soon, well and without torn files.
class ClosingsTest : public QObject {
  Q_OBJECT
 private slots:
  void initTestCase();
  void AtAnyMoment();
  void WhenTheConnectionIsAboutToStand();

 private:
  int Pick(int count) { return static_cast<int>(random_.bounded(count)); }
  QStringList Places(const QString& model);
  void Misbehave(const QString& model, const char* rule);
  void CloseOne(int number);

  QRandomGenerator random_;
  std::map<QString, std::unique_ptr<SimulatedSensor>> network_;
  SimulatedSmallSensor lines_;
  QByteArray package_;
  std::vector<double> left_ms_;  ///< from closing to the end of main, on a machine with nothing else to do
  std::vector<double> gone_ms_;  ///< from closing to the end of the process
};
const RegisterTest<ClosingsTest> registration;

void ClosingsTest::initTestCase() {
  for (const char* model : {"Quenta", "Zelto-KTC", "Marvo-KTC"}) {
    auto& sensor = network_[model];
    sensor = std::make_unique<SimulatedSensor>(
        varkel::sim::SensorOptions{.table_path = std::string("./Config/varID/") + model + ".csv",
                                   .restart_time = std::chrono::milliseconds(50)});
    sensor->Start();
  }
  const auto package = varkel::test::FullMarvoPackage();
  package_ = QByteArray(reinterpret_cast<const char*>(package.data()), static_cast<int>(package.size()));
}

QStringList ClosingsTest::Places(const QString& model) {
  if (model != kLines) return {"127.0.0.1", QString::number(network_.at(model)->port())};
  lines_.Start();
  return {QString::fromStdString(lines_.rs485_path()), QString::fromStdString(lines_.uart_path())};
}

void ClosingsTest::Misbehave(const QString& model, const char* rule) {
  if (model == kLines) return lines_.Misbehave(rule);
  network_.at(model)->Misbehave(rule);
}

/// What is wrong with the files that a run has left, or nothing.
QString TornFile(const QString& folder) {
  QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
  while (files.hasNext()) {
    const QFileInfo file(files.next());
    const QString ending = file.suffix();
    const bool is_download = file.path().endsWith("/logs");
    const QString path = file.filePath();
    if (ending == "ini" && QSettings(path, QSettings::IniFormat).allKeys().size() < 5) return "half settings";
    if (ending == "tar" && QProcess::execute("tar", {"-tf", path}) != 0) return "half an archive";
    if (is_download && file.size() < 1000) return "half a log";
    const QStringList known = {"ini", "tar", "bin", "log", "qmlc", "jsc", ""};
    if (!known.contains(ending)) return "left over: " + path;
  }
  return {};
}

double NumberAfter(const QByteArray& output, const QByteArray& word) {
  const int at = output.indexOf('\n' + word) + word.size() + 1;
  return output.mid(at, output.indexOf('\n', at) - at).toDouble();
}

void Print(const char* what, std::vector<double> times_ms) {
  if (times_ms.empty()) return;
  std::sort(times_ms.begin(), times_ms.end());
  const auto part = [&](std::size_t percent) { return times_ms[(times_ms.size() - 1) * percent / 100]; };
  std::cout << times_ms.size() << " closings, " << what << " after " << part(50) << " ms (half of them), "
            << part(99) << " ms (99 of 100), " << part(100) << " ms (all)" << std::endl;
}

void ClosingsTest::CloseOne(int number) {
  const QStringList operation = QString(kOperations[Pick(std::size(kOperations))]).split(' ');
  const QString ending = kEndings[Pick(std::size(kEndings))];
  const char* const rule = kRules[Pick(std::size(kRules))];
  const QString moment = QString::number(Pick(Pick(2) == 0 ? 300 : 1500));
  const QString wait = QString::number(Pick(300));
  const QString window = Pick(CountOf("VARKEL_WINDOW_EVERY", 5)) == 0 ? "1" : "0";
  const QTemporaryDir folder;
  QDir(folder.path()).mkdir("logs");
  QFile package(folder.filePath("package"));
  QVERIFY(package.open(QIODevice::WriteOnly) && package.write(package_) == package_.size());
  package.close();

  QStringList arguments = operation.mid(0, 1) + Places(operation[0]);
  arguments << operation[1] << moment << ending << wait << window << folder.path();
  const QString what = QString("%1: %2 %3").arg(number).arg(arguments.join(' '), rule);
  QProcess tool;
  auto environment = QProcessEnvironment::systemEnvironment();
  environment.insert("HOME", folder.path());
  tool.setProcessEnvironment(environment);
  tool.setProcessChannelMode(QProcess::MergedChannels);
  QByteArray output;
  bool misbehaves = false;
  connect(&tool, &QProcess::readyRead, this, [&] {
    output += tool.readAll();
    if (misbehaves || !output.contains("begun\n")) return;
    misbehaves = true;
    Misbehave(operation[0], rule);
  });
  tool.start(QCoreApplication::applicationDirPath() + "/closing_driver", arguments);
  const bool ended = QTest::qWaitFor([&] { return tool.state() == QProcess::NotRunning; }, kPatienceMs);
  QElapsedTimer clock;
  clock.start();
  const qint64 now = clock.msecsSinceReference();
  if (!ended) tool.kill();
  tool.waitForFinished();
  Misbehave(operation[0], "*=none");
  if (operation[0] == kLines) lines_.Stop();
  QVERIFY2(ended && tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0,
           qPrintable(what + '\n' + output));
  const double left_ms = NumberAfter(output, "left ");
  const double gone_ms = static_cast<double>(now) - NumberAfter(output, "closing ");
  left_ms_.push_back(left_ms);
  gone_ms_.push_back(gone_ms);
  const QString times = QString("%1 ms, process gone after %2 ms, ").arg(left_ms).arg(gone_ms) + what;
  if (gone_ms > 1000) std::cout << qPrintable(times) << std::endl;
  QVERIFY2(left_ms <= kAllowedMs && (kSanitized || gone_ms <= kGoneMs), qPrintable(times));
  QVERIFY2(TornFile(folder.path()).isEmpty(), qPrintable(what + '\n' + TornFile(folder.path())));
}

void ClosingsTest::AtAnyMoment() {
  const int seed = CountOf("VARKEL_SEED", static_cast<int>(QRandomGenerator::global()->bounded(1000000)));
  const int count = CountOf("VARKEL_CLOSINGS", 10);
  std::cout << "Seed " << seed << std::endl;
  random_.seed(static_cast<quint32>(seed));
  for (int number = 0; number < count; ++number) {
    CloseOne(number);
    if (number % 50 == 49) std::cout << number + 1 << " closed" << std::endl;
  }
  Print("left", left_ms_);
  Print("process gone", gone_ms_);
}

void ClosingsTest::WhenTheConnectionIsAboutToStand() {
  varkel::test::RecordedReport report;
  std::unique_ptr<varkel::LidarConnection> connection;
  std::future<void> disconnect;
  const auto start_refresh = [&] {
    disconnect = std::async(std::launch::async, [&] {
      connection->Interrupt();
      connection->Drop();
    });
    disconnect.wait_for(std::chrono::milliseconds(200));  // it either gets through now or waits for the rest
  };
  connection = std::make_unique<varkel::LidarConnection>(
      report, varkel::LidarConnection::Events{.start_refresh = start_refresh, .connected = [] {}});
  varkel::ConnectionSettings settings;
  settings.ip_address = "127.0.0.1";
  settings.port = std::to_string(network_.at("Quenta")->port());
  connection->Init({}, settings);
  disconnect.get();
  QVERIFY(!connection->is_connected());
}

}  // namespace

#include "closings_test.moc"
