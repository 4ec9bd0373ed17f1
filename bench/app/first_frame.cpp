#include "bench/app/first_frame.h"

#include <QGuiApplication>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

namespace varkel::bench {

void PrepareDisplay() {
  if (qEnvironmentVariableIsEmpty("DISPLAY")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
  }
}

std::int64_t SharedClockUs() {
  const auto since_boot = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(since_boot).count();
}

std::int64_t ResidentKiB() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    std::int64_t size = 0;
    if (word == "VmRSS:" && status >> size) return size;
  }
  return 0;
}

int ReportFirstFrame(QQuickWindow& window, std::int64_t started_us, const std::function<bool()>& is_whole) {
  std::int64_t shown_us = 0;
  std::int64_t whole_us = 0;
  bool paints_whole = false;
  QObject::connect(
      &window, &QQuickWindow::afterSynchronizing, &window, [&] { paints_whole = is_whole(); },
      Qt::DirectConnection);
  QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [&] {
    if (shown_us == 0) shown_us = SharedClockUs();
    if (whole_us != 0 || !paints_whole) return;
    whole_us = SharedClockUs();
    QTimer::singleShot(500, qGuiApp, SLOT(quit()));
  });
  const int result = QGuiApplication::exec();
  std::printf("first_frame_us\t%lld\nwhole_us\t%lld\nresident_kib\t%lld\n",
              static_cast<long long>(shown_us - started_us), static_cast<long long>(whole_us - started_us),
              static_cast<long long>(ResidentKiB()));
  return result;
}

}  // namespace varkel::bench
