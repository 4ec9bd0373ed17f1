// Measures the tool's own window:
//   tool_window start STARTED_US   from start-up until the first frame and until the first page is complete
//   tool_window idle SECONDS       CPU use on a live page, without and with a sensor
//   tool_window log SECONDS        the log window at 10,000 lines per second
//   tool_window scroll             scrolling a page of 2,000 rows by wheel and by key
//   tool_window search             searching 10,000 rows, letter by letter
//   tool_window plot               plotting five live rows over half an hour, with new readings and a pointer
#include <QAbstractItemModel>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QProcess>
#include <QQuickItem>
#include <QTemporaryDir>
#include <QTimer>
#include <QWheelEvent>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/pages/live_history.h"
#include "VarkelCore/src/values/model_selection.h"
#include "VarkelCore/src/varkel_manager.h"
#include "app/src/log_model.h"
#include "app/src/main_window.h"
#include "app/src/startup.h"
#include "bench/app/first_frame.h"

namespace {

constexpr char kTable[] = "./Config/varID/Quenta.csv";
constexpr int kLivePage = 1;
constexpr int kLinesAMillisecond = 10;
constexpr int kRows = 2000;
constexpr int kSearchedRows = 10000;
constexpr int kNotch = 120;
constexpr QSize kWindowSize(1920, 1000);
constexpr std::size_t kPlotted = 5;
constexpr int kReadingIntervalMs = 100;
constexpr int kPointerIntervalMs = 20;
constexpr qint64 kPlotMs = 15000;

void Print(const char* name, double value) {
  std::printf("%s\t%.3f\n", name, value);
}

void Wait(int duration_ms) {
  QEventLoop loop;
  QTimer end;
  QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
  end.start(duration_ms);
  loop.exec();
}

double CpuSeconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// The tool as its main function sets it up, except for scale and log file.
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

/// A simulated sensor in a process of its own, so that its work does not count as the tool's.
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

/// The longest of the measured intervals.
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
  while (total.elapsed() < seconds * 1000LL) {
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

/// Selects a model with one page of `kRows` rows: fields, switches, options and read-only values.
bool SelectLongPage(VarkelManager& manager, int rows) {
  const QTemporaryDir folder;
  QFile table(folder.filePath("Config/varID/Rows.csv"));
  if (!QDir(folder.path()).mkpath("Config/varID") || !table.open(QIODevice::WriteOnly)) return false;
  table.write(
      "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
      "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n0,Page,Group\n");
  int index = 0;
  for (int row = 1; row <= rows; ++row) {
    const auto write = [&](const char* name, const char* options, const QString& place) {
      ++index;
      table.write(QString("1,%1,0x05,0x06,%1,%2 %3,1,uint16,1,%4,mV,,,,1_1_%3_%5,2,,\n")
                      .arg(index)
                      .arg(name)
                      .arg(row)
                      .arg(options, place)
                      .toUtf8());
    };
    if (row % 4 == 0) write("Value", "", "0");
    if (row % 4 == 1) write("Field", "0~100", "1");
    if (row % 4 == 2) write("Mode", "0|1|2", "3");
    if (row % 4 == 3) {
      write("Limit on", "", "2_" + QString::number(row));
      write("Limit", "", "2");
    }
  }
  table.close();
  const QString before = QDir::currentPath();
  QDir::setCurrent(folder.path());
  manager.InitConfigFileParser("Rows");
  QDir::setCurrent(before);
  return manager.level2List().value(0).toList().size() == rows + 1;
}

/// The processor time of the window's thread from one frame, or from the input that triggers it, to the next
/// frame, in milliseconds: new rows, the scene and its painting, because a window drawn in software does it
/// all on one thread.
class Frames {
 public:
  explicit Frames(QQuickWindow& window) {
    QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [this] { times_.push_back(Elapsed()); });
  }
  void BeginInput() { Elapsed(); }
  void Clear() { times_.clear(); }
  /// The longest, and the 99th percentile.
  void PrintAs(const std::string& name) {
    std::sort(times_.begin(), times_.end());
    if (times_.empty()) return;
    Print((name + "_longest_frame_ms").c_str(), times_.back());
    Print((name + "_p99_frame_ms").c_str(), times_[times_.size() * 99 / 100]);
    Print((name + "_frames").c_str(), static_cast<double>(times_.size()));
  }

 private:
  double Elapsed() {
    const double now = CpuSeconds(CLOCK_THREAD_CPUTIME_ID);
    return (now - std::exchange(last_, now)) * 1000;
  }
  std::vector<double> times_;
  double last_ = 0;
};

/// Searches the visual tree, because items created from a model are not QObject children.
QQuickItem* FindBelow(QQuickItem* item, const QString& name) {
  for (QQuickItem* child : item->childItems()) {
    if (child->objectName() == name) return child;
    if (QQuickItem* found = FindBelow(child, name)) return found;
  }
  return nullptr;
}

int MeasureScroll() {
  Tool tool;
  Wait(1000);
  if (!SelectLongPage(*tool.manager, kRows)) return EXIT_FAILURE;
  Wait(1000);
  QQuickView& view = *tool.window->view();
  auto* const rows = FindBelow(view.rootObject(), "rows_0");
  if (rows == nullptr) return EXIT_FAILURE;
  const QPointF middle = rows->mapToScene({rows->width() / 2, rows->height() / 2});
  const auto scrolled = [&] { return rows->property("contentY").toReal(); };
  Frames frames(view);
  QElapsedTimer clock;
  clock.start();
  for (int notch = 0; notch < 150; ++notch) {
    QWheelEvent event(middle, view.mapToGlobal(middle.toPoint()), {}, {0, -kNotch}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    event.setTimestamp(static_cast<ulong>(clock.elapsed()));
    frames.BeginInput();
    QCoreApplication::sendEvent(&view, &event);
    Wait(40);
  }
  if (scrolled() < 1000) return EXIT_FAILURE;
  frames.PrintAs("scroll_wheel");
  Wait(2000);
  rows->forceActiveFocus();
  frames.Clear();
  for (int press = 0; press < 200; ++press) {
    QKeyEvent event(QEvent::KeyPress, press < 100 ? Qt::Key_PageUp : Qt::Key_PageDown, Qt::NoModifier);
    frames.BeginInput();
    QCoreApplication::sendEvent(&view, &event);
    Wait(40);
  }
  frames.PrintAs("scroll_key");
  return EXIT_SUCCESS;
}

void Press(QQuickView& view, int key, Qt::KeyboardModifiers modifiers, const QString& text) {
  QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
  QCoreApplication::sendEvent(&view, &event);
}

int MeasureSearch() {
  Tool tool;
  Wait(1000);
  if (!SelectLongPage(*tool.manager, kSearchedRows)) return EXIT_FAILURE;
  Wait(1000);
  QQuickView& view = *tool.window->view();
  if (!QMetaObject::invokeMethod(FindBelow(view.rootObject(), "search"), "open")) return EXIT_FAILURE;
  Wait(500);
  Frames frames(view);
  for (const QString query : {"value 77", "limit 9 mv", "field 0x06 1", "no such row"}) {
    for (const QChar letter : query) {
      frames.BeginInput();
      Press(view, letter.toUpper().unicode(), Qt::NoModifier, letter);
      Wait(60);
    }
    for (int i = 0; i < query.size(); ++i) {
      frames.BeginInput();
      Press(view, Qt::Key_Backspace, Qt::NoModifier, "\b");
      Wait(60);
    }
  }
  frames.PrintAs("search");
  return EXIT_SUCCESS;
}

/// Readings of the first live variables of the page, noise on a slow wave, without a sensor.
class Readings {
 public:
  Readings(varkel::LiveHistory& history, const QString& model_name) : history_(history) {
    varkel::ModelSelection selection;
    selection.Select(model_name.toStdString());
    model_ = selection.model();
    for (const auto& group : model_->catalogue->module_vars().at(kLivePage)) {
      for (varkel::VarInfo* var : group) {
        if (var->timer_update && vars_.size() < kPlotted) vars_.push_back(var);
      }
    }
  }
  void Add(varkel::ValueStore::Time time) {
    ++count_;
    std::vector<varkel::Reading> readings;
    for (varkel::VarInfo* var : vars_) {
      const double wave = 40 + 5 * std::sin(count_ / 500.0) + (std::rand() % 1000) / 1000.0;
      readings.push_back({var, std::to_string(wave), {}});
    }
    model_->values.Read(std::move(readings), model_->values.Now(), time);
    history_.Follow(model_, model_->values.TakeChanges());
  }

 private:
  varkel::LiveHistory& history_;
  std::shared_ptr<varkel::Model> model_;
  std::vector<varkel::VarInfo*> vars_;
  int count_ = 0;
};

/// Pins the page's first live rows but for the last of them, which keeps the focus. False if there is no plot
/// of all of them then.
bool PlotRows(QQuickView& view, QAbstractItemModel& rows) {
  const auto roles = rows.roleNames();
  std::size_t plotted = 0;
  for (int row = 0; row < rows.rowCount() && plotted < kPlotted; ++row) {
    const auto value = [&](const char* role) { return rows.index(row, 0).data(roles.key(role)); };
    if (!value("live").toBool()) continue;
    const QString place =
        QString("%1_%2_%3").arg(kLivePage).arg(value("group").toInt()).arg(value("variable").toInt());
    QQuickItem* const field = FindBelow(view.rootObject(), "field_" + place);
    if (field == nullptr) return false;
    field->forceActiveFocus(Qt::TabFocusReason);
    Wait(100);
    QQuickItem* const pin = FindBelow(view.rootObject(), "pinButton");
    if (pin == nullptr) return false;
    if (++plotted < kPlotted) QMetaObject::invokeMethod(pin, "clicked");
  }
  const QQuickItem* const plot = FindBelow(view.rootObject(), "plot");
  return plot != nullptr && plot->isVisible() && plot->property("series").toList().size() == int{kPlotted};
}

int MeasurePlot() {
  Tool tool;
  QQuickView& view = *tool.window->view();
  tool.window->resize(kWindowSize);  // the details have no room in the window of a machine without a screen
  view.rootObject()->setProperty("currentPage", kLivePage);
  Wait(1000);
  Readings readings(*qobject_cast<varkel::LiveHistory*>(tool.manager->history()), "Quenta");
  const auto interval = std::chrono::milliseconds(kReadingIntervalMs);
  const auto now = std::chrono::system_clock::now();
  for (auto ago = varkel::ReadingHistory::kMaxPoints; ago > 0; --ago) readings.Add(now - ago * interval);
  auto* const rows = qobject_cast<QAbstractItemModel*>(tool.manager->pageModel(kLivePage));
  if (!PlotRows(view, *rows)) return EXIT_FAILURE;
  Wait(1000);
  const QQuickItem* const plot = FindBelow(view.rootObject(), "plot");
  QElapsedTimer clock;
  clock.start();
  Frames frames(view);
  for (qint64 read_ms = 0, step = 0; clock.elapsed() < kPlotMs; ++step) {
    const auto width = static_cast<qint64>(plot->width());
    const QPointF place = plot->mapToScene({static_cast<qreal>(step * 3 % width), plot->height() / 2});
    QMouseEvent move(QEvent::MouseMove, place, view.mapToGlobal(place.toPoint()), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    frames.BeginInput();
    QCoreApplication::sendEvent(&view, &move);
    if (clock.elapsed() - read_ms >= kReadingIntervalMs) {
      read_ms = clock.elapsed();
      readings.Add(std::chrono::system_clock::now());
      emit rows->dataChanged(rows->index(0, 0), rows->index(rows->rowCount() - 1, 0));  // as the sensor's do
    }
    Wait(kPointerIntervalMs);
  }
  frames.PrintAs("plot");
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
  varkel::bench::PrepareDisplay();
  QApplication application(argc, argv);
  const std::string what = argc > 1 ? argv[1] : "";
  const std::int64_t argument = argc > 2 ? std::strtoll(argv[2], nullptr, 10) : 0;
  if (what == "idle") return MeasureIdle(static_cast<int>(argument));
  if (what == "scroll") return MeasureScroll();
  if (what == "search") return MeasureSearch();
  if (what == "plot") return MeasurePlot();
  if (what == "log") return MeasureLog(static_cast<int>(argument));
  Tool tool;
  QQuickView& view = *tool.window->view();
  return varkel::bench::ReportFirstFrame(
      view, argument, [&view] { return view.rootObject()->property("complete").toBool(); });
}
