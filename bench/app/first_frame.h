#pragma once

#include <QQuickWindow>
#include <cstdint>
#include <functional>

/// What a program measures until its window is on the screen.
namespace varkel::bench {

/// Without a display the window is drawn into memory. Call before creating the application object.
void PrepareDisplay();

/// Microseconds of a clock shared by all processes.
std::int64_t SharedClockUs();

/// Resident memory in KiB.
std::int64_t ResidentKiB();

/// Runs the application until the window's first frame and the first frame for which `is_whole` is true have
/// been shown and the events after them are processed. Prints "first_frame_us<tab>N" and "whole_us<tab>N",
/// counted from `started_us`, and "resident_kib<tab>N". `is_whole` is called while no other thread runs QML.
int ReportFirstFrame(
    QQuickWindow& window, std::int64_t started_us,
    const std::function<bool()>& is_whole = [] { return true; });

}  // namespace varkel::bench
