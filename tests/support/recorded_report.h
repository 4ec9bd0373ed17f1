#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/tasks/user_report.h"

namespace varkel::test {

/// What was reported to the user, in order: "error: text", "success: text", "TYPE text" of the log pane.
class RecordedReport : public UserReport {
 public:
  void Log(const std::string& text, const std::string& type) override { Add(type + " " + text); }
  void Bytes(const std::string& line) override { Add("bytes: " + line); }
  void Error(const std::string& text) override { Add("error: " + text); }
  void Success(const std::string& text) override { Add("success: " + text); }

  void Add(std::string line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
  }
  /// Everything reported since the last call.
  std::vector<std::string> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }
  bool Has(const std::string& line) const {
    const std::lock_guard lock(mutex_);
    return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace varkel::test
