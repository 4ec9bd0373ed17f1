#include <functional>
#include <iostream>

#include "bench/soak/figures.h"
#include "simulator/src/simulated_small_sensor.h"
#include "tests/core/core_test.h"

namespace {

using varkel::sim::SimulatedSensor;

constexpr int kPatienceMs = 15000;
constexpr long kHeapAllowanceKib = 128;
constexpr long kResidentAllowanceKib = 4096;

/// Runs steps and prints the figures at the start, after a tenth and at the end. After the first tenth, which
/// fills caches, nothing may grow.
void Measure(ControllerFixture& fixture, const std::string& name, int count,
             const std::function<bool()>& step) {
  const auto step_and_forget = [&] {
    const bool done = step();
    fixture.sensor->ClearReceived();  // the fixture's own records do not count as growth
    for (QStringList* texts : {&fixture.errors, &fixture.successes, &fixture.log}) texts->clear();
    return done;
  };
  const auto figures = [&](int done) {
    const Figures now = Figures::Now();
    std::cout << name << ", " << done << " of " << count << ": " << now.Text() << std::endl;
    return now;
  };
  if (count == 0) return;
  QVERIFY(step_and_forget());
  figures(0);
  Figures tenth;
  for (int done = 1; done <= count; ++done) {
    QVERIFY2(step_and_forget(), qPrintable(QString("step %1 of %2").arg(done).arg(count)));
    if (done == (count + 9) / 10) tenth = figures(done);
  }
  const Figures end = figures(count);
  QVERIFY(end.handles <= tenth.handles && end.threads <= tenth.threads);
  QVERIFY(end.heap_kib <= tenth.heap_kib + kHeapAllowanceKib);
  QVERIFY(kSanitized || end.resident_kib <= tenth.resident_kib + kResidentAllowanceKib);
}

/// Hours of use do not make memory, handles or threads grow.
class GrowthTest : public QObject {
  Q_OBJECT
 private slots:
  void ConnectionsThatTheSensorCuts_data() {
    const Table<int> row("count");
    row("Quenta", CountOf("VARKEL_CYCLES", 40));
    row("Zelto", CountOf("VARKEL_SMALL_CYCLES", 20));
    row("Zelto-KTC", CountOf("VARKEL_SMALL_CYCLES", 20));
  }
  void ConnectionsThatTheSensorCuts() {
    QFETCH(int, count);
    const std::string model = QTest::currentDataTag();
    const bool on_lines = model == "Zelto";
    ControllerFixture fixture;
    VarkelManager& manager = *fixture.manager;
    varkel::sim::SimulatedSmallSensor lines;
    if (model != "Quenta") {
      manager.InitConfigFileParser(QString::fromStdString(model));
      fixture.sensor = std::make_unique<SimulatedSensor>(
          varkel::sim::SensorOptions{.table_path = "./Config/varID/" + model + ".csv"});
      fixture.sensor->Start();
      manager.set_port(QString::number(fixture.sensor->port()));
    }
    bool alive = true;
    connect(&manager, &VarkelManager::connectionCheckFinished, this, [&](bool answer) { alive = answer; });
    const auto is_lost = [&] {
      if (alive) manager.CheckConnectionInBackground();
      return !alive;
    };
    // The sensor is in the same process, so its connections must end, too.
    const auto is_left = [&] { return fixture.sensor->connected_clients() == 0; };
    Measure(fixture, model + ", connections that the sensor cuts", count, [&] {
      if (on_lines) {
        lines.Start();
        manager.set_serial_port_485(QString::fromStdString(lines.rs485_path()));
        manager.set_serial_port_232(QString::fromStdString(lines.uart_path()));
      }
      if (!fixture.Connect()) return false;
      on_lines ? lines.PullUart() : fixture.sensor->AddFault("*=close");
      alive = true;
      const bool noticed = QTest::qWaitFor(is_lost, kPatienceMs);
      manager.Stop();
      fixture.sensor->ClearFaults();
      lines.Stop();
      lines.device().log.Clear();
      if (model == "Zelto-KTC") fixture.sensor->device().log.Clear();
      return noticed && !manager.IsConnected() && QTest::qWaitFor(is_left, kPatienceMs);
    });
  }

  void RefreshRounds() {
    static constexpr int kPageWithOneLiveCommand = 7;
    ControllerFixture fixture;
    QVERIFY(fixture.ConnectOn(kPageWithOneLiveCommand));
    QSignalSpy rounds(fixture.manager.get(), &VarkelManager::myTimerMapChanged);
    Measure(fixture, "Refresh rounds", CountOf("VARKEL_ROUNDS", 100), [&] {
      rounds.clear();
      return rounds.wait(kPatienceMs) && fixture.errors.isEmpty();
    });
  }
};
const RegisterTest<GrowthTest> register_growth_test;

}  // namespace

#include "growth.moc"
