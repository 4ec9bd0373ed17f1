#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// Keeps what operations report, for callers that show it at the end. Thread-safe.
class RecordingReport : public UserReport {
 public:
  void Log(const std::string& text, const std::string& type) override {
    const std::lock_guard lock(mutex_);
    if (type != "INFO") log_.push_back(text);
  }
  void Bytes(const std::string&) override {}
  void Error(const std::string& text) override {
    const std::lock_guard lock(mutex_);
    error_ = text;
  }
  void Success(const std::string& text) override {
    const std::lock_guard lock(mutex_);
    success_ = text;
  }

  /// The last error and success notices; empty if there were none.
  std::string error() const {
    const std::lock_guard lock(mutex_);
    return error_;
  }
  std::string success() const {
    const std::lock_guard lock(mutex_);
    return success_;
  }
  /// The warnings and errors.
  std::vector<std::string> log() const {
    const std::lock_guard lock(mutex_);
    return log_;
  }

 private:
  mutable std::mutex mutex_;  // guards what follows
  std::string error_;
  std::string success_;
  std::vector<std::string> log_;
};

}  // namespace varkel
