#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "libquarn/Platform/src/logger.h"
#include "libquarn/Platform/src/socket.h"
#include "tests/support/silent_address.h"

namespace quarn::test {

inline constexpr char kLoopback[] = "127.0.0.1";

/// How long an expected event may take before the test fails.
inline constexpr std::chrono::seconds kPatience{10};

/// How long "at once" may take on a busy machine under a sanitizer.
inline constexpr std::chrono::milliseconds kAtOnce{900};

inline bool Eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

inline std::chrono::milliseconds TimeOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

/// Runs `blocking` on another thread, and expects `end` to end it at once.
inline void ExpectEndsAtOnce(const std::function<void()>& blocking, const std::function<void()>& end) {
  auto running = std::async(std::launch::async, blocking);
  EXPECT_EQ(running.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
  EXPECT_LT(TimeOf([&] {
              end();
              running.wait();
            }),
            kAtOnce);
}

/// A port that is not in use.
inline std::uint16_t FreePort() {
  return platform::TcpListener::Listen(kLoopback, 0)->port();
}

/// Collects the log lines written during its lifetime as "level text".
class LogLines {
 public:
  LogLines() {
    log_lib::Logger::GetInstance().SetTap([lines = lines_](int level, const std::string& text) {
      const std::lock_guard lock(lines->mutex);
      lines->texts.push_back(std::to_string(level) + " " + text);
    });
  }
  ~LogLines() { log_lib::Logger::GetInstance().SetTap({}); }

  std::vector<std::string> All() const {
    const std::lock_guard lock(lines_->mutex);
    return lines_->texts;
  }
  bool Has(const std::string& line) const {
    const auto all = All();
    return std::find(all.begin(), all.end(), line) != all.end();
  }

 private:
  // Shared with the tap: a thread may still be inside it when the collector is destroyed.
  struct Lines {
    std::mutex mutex;
    std::vector<std::string> texts;
  };
  const std::shared_ptr<Lines> lines_ = std::make_shared<Lines>();
};

}  // namespace quarn::test
