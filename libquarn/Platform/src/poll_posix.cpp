#include "libquarn/Platform/src/poll_posix.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace quarn::platform {

std::int64_t MicrosecondsUntil(std::chrono::steady_clock::time_point deadline) {
  const auto left = deadline - std::chrono::steady_clock::now();
  return std::max<std::int64_t>(std::chrono::ceil<std::chrono::microseconds>(left).count(), 0);
}

int Poll(std::span<pollfd> entries, std::chrono::microseconds timeout) {
  const bool endless = timeout.count() < 0;
  const auto deadline = std::chrono::steady_clock::now() + (endless ? std::chrono::microseconds(0) : timeout);
  std::chrono::nanoseconds left = timeout;
  for (;;) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec limit{static_cast<std::time_t>(seconds.count()),
                         static_cast<long>((left - seconds).count())};
    const int ready = ppoll(entries.data(), entries.size(), endless ? nullptr : &limit, nullptr);
    if (ready >= 0 || errno != EINTR) {
      return ready;
    }
    left = std::max<std::chrono::nanoseconds>(deadline - std::chrono::steady_clock::now(),
                                              std::chrono::nanoseconds(0));
  }
}

}  // namespace quarn::platform
