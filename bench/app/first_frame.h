#pragma once

#include <QQuickWindow>
#include <cstdint>

/// What a program tells of itself once its window is on the screen.
namespace varkel::bench {

/// Without a display the window is drawn into memory. Ahead of the application object.
void PrepareDisplay();

/// Microseconds of the clock that all processes of the machine share.
std::int64_t SharedClockUs();

/// Resident memory in KiB.
std::int64_t ResidentKiB();

/// Runs the application until the window's first frame has been shown and the events behind it are done:
/// prints "first_frame_us<tab>N", counted from the moment in `started_us`, and "resident_kib<tab>N".
int ReportFirstFrame(QQuickWindow& window, std::int64_t started_us);

}  // namespace varkel::bench
