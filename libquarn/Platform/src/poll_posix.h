#pragma once

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <span>

/// Waiting for descriptors with a deadline. Only this folder's sources for POSIX systems include this.
namespace quarn::platform {

/// The time until `deadline` in microseconds, rounded up; 0 once it has passed.
std::int64_t MicrosecondsUntil(std::chrono::steady_clock::time_point deadline);

/// Waits until one of the entries has an event, and continues when a signal interrupts it; a negative time
/// waits forever. Returns the number of entries with events, 0 after the time, or -1 with errno. Descriptors
/// may have any number, unlike those of select.
int Poll(std::span<pollfd> entries, std::chrono::microseconds timeout);

}  // namespace quarn::platform
