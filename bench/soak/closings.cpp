#include <QCoreApplication>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <algorithm>
#include <iostream>

#include "bench/soak/figures.h"
#include "bench/soak/operations.h"
#include "simulator/src/simulated_sensor.h"
#include "simulator/src/simulated_small_sensor.h"
#include "tests/core/marvo_sample.h"
#include "tests/support/qt_test.h"

namespace {

using varkel::sim::SimulatedSensor;

constexpr double kAllowedMs = 1000;
// Waiting for a sensor takes at least four seconds; less only means a busy machine.
constexpr double kGoneMs = 3000;
constexpr int kClosingPatienceMs = 120000;

/// What is wrong with the files that a run left; empty if nothing is.
QString TornFile(const QString& folder) {
  QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
  while (files.hasNext()) {
    const QFileInfo file(files.next());
    const QString ending = file.suffix();
    const QString path = file.filePath();
    if (ending == "ini") {
      if (QSettings(path, QSettings::IniFormat).allKeys().size() < 5) return "truncated settings";
    }
    if (ending == "tar" && QProcess::execute("tar", {"-tf", path}) != 0) return "truncated archive";
    if (file.path().endsWith("/logs") && file.size() < 1000) return "truncated log";
    const QStringList known = {"ini", "txt", "tar", "bin", "log", "qmlc", "jsc", ""};
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
  std::cout << times_ms.size() << " closings, " << what << " after " << part(50) << " ms (median), "
            << part(99) << " ms (99th percentile), " << part(100) << " ms (maximum)" << std::endl;
}

/// Whatever is running, a closed tool's process ends soon and cleanly, without truncated files.
class ClosingsTest : public QObject {
  Q_OBJECT
 private slots:
  void initTestCase() {
    for (const char* model : {"Quenta", "Zelto-KTC", "Marvo-KTC"}) {
      const std::string table = std::string("./Config/varID/") + model + ".csv";
      network_[model] = std::make_unique<SimulatedSensor>(
          varkel::sim::SensorOptions{.table_path = table, .restart_time = std::chrono::milliseconds(50)});
      network_[model]->Start();
    }
  }

  void AtAnyMoment() {
    const int seed = CountOf("VARKEL_SEED", static_cast<int>(QRandomGenerator::global()->bounded(1000000)));
    const int count = CountOf("VARKEL_CLOSINGS", 10);
    std::cout << "Seed " << seed << std::endl;
    random_.seed(static_cast<quint32>(seed));
    for (int number = 1; number <= count; ++number) {
      CloseOne(number);
      if (number % 50 == 0) std::cout << number << " closed" << std::endl;
    }
    Print("left", left_ms_);
    Print("process gone", gone_ms_);
  }

 private:
  template <typename List>
  auto Pick(const List& list) {
    return list[static_cast<int>(random_.bounded(static_cast<int>(std::size(list))))];
  }
  /// One of the operations of all models, including connecting: model and name.
  QStringList PickOperation() {
    QList<QStringList> all;
    for (const char* model : {"Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"}) {
      all << QStringList{model, "connect"};
      for (const Operation& operation : OperationsOf(model, {})) all << QStringList{model, operation.name};
    }
    return Pick(all);
  }
  void CloseOne(int number);

  QRandomGenerator random_;
  std::map<QString, std::unique_ptr<SimulatedSensor>> network_;
  varkel::sim::SimulatedSmallSensor lines_;
  std::vector<double> left_ms_;  ///< from closing to the end of main, on an otherwise idle machine
  std::vector<double> gone_ms_;  ///< from closing to the end of the process
};
const RegisterTest<ClosingsTest> register_closings_test;

void ClosingsTest::CloseOne(int number) {
  const QStringList operation = PickOperation();
  const bool on_lines = operation[0] == "Zelto";
  const auto misbehave = [&](const std::string& rule) {
    on_lines ? lines_.AddFault(rule) : network_.at(operation[0])->AddFault(rule);
  };
  const char* const rule = Pick(std::array{"*=none", "*=late:60", "*=silence", "*=close"});
  const int latest_ms = Pick(std::array{300, 1500});
  const QTemporaryDir folder;
  QDir(folder.path()).mkdir("logs");
  QFile package(folder.filePath("package"));
  const auto content = varkel::test::FullMarvoPackage();
  QVERIFY(package.open(QIODevice::WriteOnly));
  package.write(reinterpret_cast<const char*>(content.data()), static_cast<qint64>(content.size()));
  package.close();

  if (on_lines) lines_.Start();
  const QString ending = Pick(QStringList{"close", "disconnect", "model", "reconnect"});
  QStringList arguments{operation[0]};
  if (on_lines) {
    arguments << QString::fromStdString(lines_.rs485_path()) << QString::fromStdString(lines_.uart_path());
  } else {
    arguments << "127.0.0.1" << QString::number(network_.at(operation[0])->port());
  }
  arguments << operation[1] << QString::number(random_.bounded(latest_ms)) << ending
            << QString::number(random_.bounded(300)) << folder.path();
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
    if (!std::exchange(misbehaves, output.contains("begun\n")) && misbehaves) misbehave(rule);
  });
  tool.start(QCoreApplication::applicationDirPath() + "/closing_driver", arguments);
  const bool ended =
      QTest::qWaitFor([&] { return tool.state() == QProcess::NotRunning; }, kClosingPatienceMs);
  QElapsedTimer clock;
  clock.start();
  const auto now = static_cast<double>(clock.msecsSinceReference());
  if (!ended) tool.kill();
  tool.waitForFinished();
  misbehave("*=none");
  if (on_lines) lines_.Stop();
  QVERIFY2(ended && tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0,
           qPrintable(what + '\n' + output));
  left_ms_.push_back(NumberAfter(output, "left "));
  gone_ms_.push_back(now - NumberAfter(output, "closing "));
  const QString times =
      QString("%1 ms, process gone after %2 ms, ").arg(left_ms_.back()).arg(gone_ms_.back()) + what;
  if (gone_ms_.back() > 1000) std::cout << qPrintable(times) << std::endl;
  QVERIFY2(left_ms_.back() <= kAllowedMs && (kSanitized || gone_ms_.back() <= kGoneMs), qPrintable(times));
  QVERIFY2(TornFile(folder.path()).isEmpty(), qPrintable(what + '\n' + TornFile(folder.path())));
}

}  // namespace

#include "closings.moc"
