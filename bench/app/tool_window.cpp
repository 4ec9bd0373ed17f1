// The tool's own window, from its start-up on:
//   tool_window start STARTED_US   until its first frame, and until the first page is whole
//   tool_window idle SECONDS       share of a core on a live page, without and with a sensor
//   tool_window log SECONDS        the log window in a flood of 10,000 lines a second
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QQuickItem>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

#include "VarkelCore/src/varkel_manager.h"
#include "app/src/log_model.h"
#include "app/src/main_window.h"
#include "app/src/startup.h"
#include "bench/app/first_frame.h"

namespace {

constexpr char kTable[] = "./Config/varID/Quenta.csv";
constexpr int kLivePage = 1;
constexpr int kLinesAMillisecond = 10;

void Print(const char* name, double value) {
  std::printf("%s\t%.3f\n", name, value);
}

void Wait(int duration_ms) {
  QEventLoop loop;
  QTimer::singleShot(duration_ms, &loop, &QEventLoop::quit);
  loop.exec();
}

double CpuSeconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// The tool as its main function sets it up, but for scale and log file.
struct Tool {
  Tool() {
    QDir::setCurrent(startup::InstallRoot(QCoreApplication::applicationDirPath()));
    const QFont font = startup::LoadFonts();
    QApplication::setPalette(startup::DarkPalette());
    QApplication::setFont(font);
    manager = VarkelManager::GetInstance(true, kTable);
    window = std::make_unique<MainWindow>(nullptr, QString());
    window->show();
  }

  VarkelManager* manager = nullptr;  // the window's
  std::unique_ptr<MainWindow> window;
};

/// This process's share of a core, in percent.
double CpuShare(int seconds) {
  const double before = CpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
  Wait(seconds * 1000);
  return (CpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - before) / seconds * 100;
}

/// A simulated sensor in a process of its own, so that its work is not taken for the tool's.
class Sensor {
 public:
  Sensor() {
    process_.start(QCoreApplication::applicationDirPath() + "/varkel-sim", {"--port", "0"});
    while (process_.waitForReadyRead(10000)) {
      const QByteArray line = process_.readLine();
      if (line.startsWith("listening on ")) {
        port_ = line.mid(line.lastIndexOf(':') + 1).trimmed();
        return;
      }
    }
  }
  ~Sensor() {
    process_.terminate();
    process_.waitForFinished();
  }
  QString port() const { return port_; }

 private:
  QProcess process_;
  QString port_;
};

int MeasureIdle(int seconds) {
  const Sensor sensor;
  Tool tool;
  Wait(2000);
  QMetaObject::invokeMethod(tool.window->view()->rootObject(), "choosePage", Q_ARG(QVariant, kLivePage));
  Wait(1000);
  const double without = CpuShare(seconds);
  tool.manager->set_ip_address("127.0.0.1");
  tool.manager->set_port(sensor.port());
  tool.manager->ConnectLidar();
  Wait(3000);
  if (!tool.manager->IsConnected()) return EXIT_FAILURE;
  Print("idle_cpu_percent", without);
  Print("live_cpu_percent", CpuShare(seconds));
  return EXIT_SUCCESS;
}

/// The longest of what it is told.
struct Longest {
  void Begin() { timer.start(); }
  void End() { ms = std::max(ms, static_cast<double>(timer.nsecsElapsed()) / 1e6); }
  QElapsedTimer timer;
  double ms = 0;
};

int MeasureLog(int seconds) {
  Tool tool;
  Wait(1000);
  QQuickItem* const root = tool.window->view()->rootObject();
  QMetaObject::invokeMethod(root, "openLog");
  auto* const log_window = root->property("logWindow").value<QQuickWindow*>();
  if (log_window == nullptr) return EXIT_FAILURE;
  Wait(500);
  Longest frame;
  QObject::connect(log_window, &QQuickWindow::afterAnimating, log_window, [&] { frame.Begin(); });
  int frames = 0;
  QObject::connect(log_window, &QQuickWindow::frameSwapped, log_window, [&] {
    frame.End();
    ++frames;
  });
  QElapsedTimer total;
  total.start();
  qint64 sent = 0;
  std::int64_t at_cap_kib = 0;
  while (total.elapsed() < seconds * 1000) {
    for (const qint64 due = total.elapsed() * kLinesAMillisecond; sent < due; ++sent) {
      emit tool.manager->sendLogMessage(QStringLiteral("Line %1 of a flood of messages").arg(sent), "INFO");
    }
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    if (at_cap_kib == 0 && sent > 3 * static_cast<qint64>(LogModel::kMaxLines)) {
      at_cap_kib = varkel::bench::ResidentKiB();
    }
  }
  Print("log_longest_frame_ms", frame.ms);
  Print("log_frames_per_s", static_cast<double>(frames) / seconds);
  Print("log_growth_kib", static_cast<double>(varkel::bench::ResidentKiB() - at_cap_kib));
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
  varkel::bench::PrepareDisplay();
  QApplication application(argc, argv);
  const std::string what = argc > 1 ? argv[1] : "";
  const char* const argument = argc > 2 ? argv[2] : "0";
  if (what == "idle") return MeasureIdle(std::atoi(argument));
  if (what == "log") return MeasureLog(std::atoi(argument));
  Tool tool;
  QQuickView& view = *tool.window->view();
  return varkel::bench::ReportFirstFrame(
      view, std::atoll(argument), [&view] { return view.rootObject()->property("complete").toBool(); });
}
