#include <QElapsedTimer>
#include <QTest>
#include <functional>
#include <iostream>

#include "simulator/src/simulated_small_sensor.h"
#include "tests/core/core_test.h"
#include "tests/endurance/figures.h"

namespace {

using varkel::sim::SimulatedSensor;
using varkel::sim::SimulatedSmallSensor;

constexpr int kPatienceMs = 15000;

/// Hours of use leave the process as it was: no growth of memory, handles or threads.
class GrowthTest : public QObject {
  Q_OBJECT
 private slots:
  void ConnectionsThatTheSensorCuts_data();
  void ConnectionsThatTheSensorCuts();
  void RefreshRounds();
};
const RegisterTest<GrowthTest> registration;

/// What was written down for the test itself is no growth of the tool.
void Forget(Bench& bench) {
  bench.sensor->ClearReceived();
  bench.errors.clear();
  bench.successes.clear();
  bench.log.clear();
}

/// Runs steps and prints the figures at the start, after a tenth and at the end. From the tenth on nothing
/// may grow: the first steps fill caches.
void Measure(const std::string& name, int count, const std::function<bool()>& step,
             const std::function<Figures()>& figures) {
  static constexpr long kHeapAllowanceKib = 128;
  static constexpr long kResidentAllowanceKib = 4096;
  const auto print = [&](int done, const Figures& now) {
    std::cout << name << ", " << done << " of " << count << ": " << now.Text() << std::endl;
  };
  if (count == 0) return;
  QVERIFY(step());
  print(0, figures());
  Figures tenth;
  for (int done = 1; done <= count; ++done) {
    QVERIFY2(step(), qPrintable(QString("step %1 of %2").arg(done).arg(count)));
    if (done != (count + 9) / 10) continue;
    tenth = figures();
    print(done, tenth);
  }
  const Figures end = figures();
  print(count, end);
  QVERIFY(end.handles <= tenth.handles);
  QVERIFY(end.threads <= tenth.threads);
  QVERIFY(end.heap_kib <= tenth.heap_kib + kHeapAllowanceKib);
  QVERIFY(kSanitized || end.resident_kib <= tenth.resident_kib + kResidentAllowanceKib);
}

void GrowthTest::ConnectionsThatTheSensorCuts_data() {
  QTest::addColumn<int>("count");
  QTest::newRow("Quenta") << CountOf("VARKEL_CYCLES", 4);
  QTest::newRow("Zelto") << CountOf("VARKEL_SMALL_CYCLES", 3);
  QTest::newRow("Zelto-KTC") << CountOf("VARKEL_SMALL_CYCLES", 3);
}

void GrowthTest::ConnectionsThatTheSensorCuts() {
  QFETCH(int, count);
  const std::string model = QTest::currentDataTag();
  Bench bench;
  VarkelManager& manager = *bench.manager;
  SimulatedSmallSensor lines;
  if (model != "Quenta") {
    manager.InitConfigFileParser(QString::fromStdString(model));
    bench.sensor = std::make_unique<SimulatedSensor>(
        varkel::sim::SensorOptions{.table_path = "./Config/varID/" + model + ".csv"});
    bench.sensor->Start();
    manager.set_port(QString::number(bench.sensor->port()));
  }
  bool alive = true;
  connect(&manager, &VarkelManager::connectionCheckFinished, this, [&](bool answer) { alive = answer; });
  const auto cycle = [&] {
    if (model == "Zelto") {
      lines.Start();
      manager.set_serial_port_485(QString::fromStdString(lines.rs485_path()));
      manager.set_serial_port_232(QString::fromStdString(lines.uart_path()));
    }
    if (!bench.Connect()) return false;
    if (model == "Zelto") {
      lines.PullUart();
    } else {
      bench.sensor->Misbehave("*=close");
    }
    const auto is_lost = [&] {
      if (alive) manager.CheckConnectionInBackground();
      return !alive;
    };
    alive = true;
    const bool noticed = QTest::qWaitFor(is_lost, kPatienceMs);
    manager.Stop();
    bench.sensor->Behave();
    if (model == "Zelto") {
      lines.Stop();
      lines.device().log.Clear();
    } else if (model != "Quenta") {
      bench.sensor->device().log.Clear();
    }
    Forget(bench);
    return noticed && !manager.IsConnected();
  };
  // The sensor lives in the same process: its connections have to end, too.
  Measure(model + ", connections that the sensor cuts", count, cycle, [&] {
    [[maybe_unused]] const bool left =
        QTest::qWaitFor([&] { return bench.sensor->connected_clients() == 0; }, kPatienceMs);
    return Figures::Now();
  });
}

void GrowthTest::RefreshRounds() {
  static constexpr int kPageWithOneLiveCommand = 7;
  Bench bench;
  bench.manager->setModuleIndexUse(kPageWithOneLiveCommand);
  QVERIFY(bench.Connect());
  int rounds = 0;
  connect(bench.manager.get(), &VarkelManager::myTimerMapChanged, this, [&] { ++rounds; });
  const auto round = [&] {
    rounds = 0;
    const bool came = QTest::qWaitFor([&] { return rounds > 0; }, kPatienceMs) && bench.errors.isEmpty();
    Forget(bench);
    return came;
  };
  Measure("Refresh rounds", CountOf("VARKEL_ROUNDS", 10), round, Figures::Now);
}

}  // namespace

#include "growth_test.moc"
