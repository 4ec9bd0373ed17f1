// Whole-process measurements of varkelctl in milliseconds, as lines "name<tab>number". The fastest run
// counts, because other work on the machine disturbed it least.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "libquarn/KtcClient/src/ktc_client.h"
#include "simulator/src/simulated_sensor.h"

namespace {

using varkel::sim::SimulatedSensor;

constexpr int kStarts = 15;
constexpr int kReadings = 5;
constexpr std::size_t kSensors = 50;

// The minimum time for reading: the client waits for stale input before each exchange, and connecting waits
// once.
constexpr double kExchangeMs = 50;
constexpr double kConnectMs = 300;

/// Milliseconds; negative if the program failed.
double Time(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  QElapsedTimer timer;
  timer.start();
  process.start(QCoreApplication::applicationDirPath() + '/' + program, arguments);
  const bool ok = process.waitForFinished(120000) && process.exitCode() == 0;
  return ok ? static_cast<double>(timer.nsecsElapsed()) / 1e6 : -1;
}

double Best(int runs, const QString& program, const QStringList& arguments) {
  double best = Time(program, arguments);
  for (int i = 1; i < runs; ++i) best = std::min(best, Time(program, arguments));
  return best;
}

/// The fastest exchange of a connected client: 50 ms for stale input, and the round trip.
double ExchangeMs(const SimulatedSensor& sensor) {
  quarn::lidar::KtcClient client("127.0.0.1", sensor.port(), false, 0, 1, "", "", "", 4000, 4000, 5.0F,
                                 std::uint16_t{0});
  while (!client.IsOpen()) std::this_thread::yield();
  double best = 1e9;
  for (int i = 0; i < kStarts; ++i) {
    QElapsedTimer timer;
    timer.start();
    if (!client.Query({}, 0x07)) return -1;
    best = std::min(best, static_cast<double>(timer.nsecsElapsed()) / 1e6);
  }
  return best;
}

}  // namespace

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  std::vector<std::unique_ptr<SimulatedSensor>> sensors;
  QStringList all = {"--jobs", QString::number(kSensors), "read", "--all"};
  for (std::size_t i = 0; i < kSensors; ++i) {
    sensors.push_back(std::make_unique<SimulatedSensor>(
        varkel::sim::SensorOptions{.table_path = VARKEL_TABLES "/Quenta.csv"}));
    sensors.back()->Start();
    all << "--host" << QStringLiteral("127.0.0.1:%1").arg(sensors.back()->port());
  }
  const QStringList one = {"read", "--all", "--host", all[5]};
  const double read_one = Best(kReadings, "varkelctl", one);
  const auto exchanges = static_cast<double>(sensors.front()->exchanges()) / kReadings;
  const double exchange = ExchangeMs(*sensors.front());
  const double read_all = Best(kReadings, "varkelctl", all);
  const double start = Best(kStarts, "varkelctl", {"--version"});
  const double empty = Best(kStarts, "empty_program", {});
  std::printf("varkelctl/read_all_ms\t%.3f\nvarkelctl/read_all_least_ms\t%.3f\n", read_one,
              exchanges * exchange + kConnectMs);
  std::printf("varkelctl/read_50_ms\t%.3f\nvarkelctl/start_ms\t%.3f\nempty_program/start_ms\t%.3f\n",
              read_all, start, empty);
  return std::min({read_one, exchange, read_all, start, empty}) < 0 ? 1 : 0;
}
