// Whole-process measurements of the window, as lines "name<tab>number". Start and memory are measured
// alternately with an empty window, with priority over the machine's other work where that is allowed: the
// fastest of nine starts, and the median of their memory.
#include <pthread.h>
#include <sched.h>
#include <QCoreApplication>
#include <QProcess>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench/app/first_frame.h"

namespace {

constexpr int kStarts = 9;
constexpr int kSeconds = 10;

using Figures = std::map<std::string, std::vector<double>>;

bool Run(const QString& program, const QStringList& arguments, Figures& figures) {
  QProcess process;
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process.start(QCoreApplication::applicationDirPath() + '/' + program, arguments);
  if (!process.waitForFinished(120000) || process.exitCode() != 0) return false;
  for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
    const QList<QByteArray> parts = line.split('\t');
    bool is_number = false;
    const double number = parts.size() == 2 ? parts[1].toDouble(&is_number) : 0;
    if (is_number) figures[program.toStdString() + "/" + parts[0].toStdString()].push_back(number);
  }
  return true;
}

/// Gives this thread and its children priority over the machine's other work, where that is allowed; returns
/// whether it is.
void RaisePriority(bool on) {
  sched_param priority{};
  priority.sched_priority = on ? 1 : 0;
  pthread_setschedparam(pthread_self(), on ? SCHED_FIFO : SCHED_OTHER, &priority);
}

void Print(const Figures& figures) {
  for (auto [name, numbers] : figures) {
    std::sort(numbers.begin(), numbers.end());
    const bool is_time = name.find("_us") != std::string::npos;
    std::printf("%s\t%.3f\n", name.c_str(), numbers[is_time ? 0 : numbers.size() / 2]);
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  const QCoreApplication application(argc, argv);
  Figures figures;
  bool ok = true;
  const auto now = [] { return QString::number(varkel::bench::SharedClockUs()); };
  RaisePriority(true);
  for (int i = 0; i < kStarts; ++i) {
    ok = Run("empty_window", {now()}, figures) && ok;
    ok = Run("tool_window", {"start", now()}, figures) && ok;
  }
  RaisePriority(false);
  ok = Run("tool_window", {"idle", QString::number(kSeconds)}, figures) && ok;
  ok = Run("tool_window", {"log", QString::number(kSeconds)}, figures) && ok;
  ok = Run("tool_window", {"scroll"}, figures) && ok;
  ok = Run("tool_window", {"search"}, figures) && ok;
  Print(figures);
  return ok ? 0 : 1;
}
