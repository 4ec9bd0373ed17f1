#pragma once

#include <QQuickWindow>
#include <cstdint>
#include <functional>

/// What a program reports once its window is on the screen.
namespace varkel::bench {

/// Without a display the window is drawn into memory. Ahead of the application object.
void PrepareDisplay();

/// Microseconds of the clock that all processes of the machine share.
std::int64_t SharedClockUs();

/// Resident memory in KiB.
std::int64_t ResidentKiB();

/// Runs the application until the window's first frame and the first one that `is_whole` calls whole have
/// been shown and the events behind them are done. Prints "first_frame_us<tab>N" and "whole_us<tab>N",
/// counted from the moment in `started_us`, and "resident_kib<tab>N". `is_whole` is asked while no other
/// thread runs QML.
int ReportFirstFrame(
    QQuickWindow& window, std::int64_t started_us,
    const std::function<bool()>& is_whole = [] { return true; });

}  // namespace varkel::bench
