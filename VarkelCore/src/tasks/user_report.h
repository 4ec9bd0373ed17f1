#pragma once

#include <exception>
#include <functional>
#include <string>

namespace varkel {

/// What an operation reports to the user. Thread-safe.
class UserReport {
 public:
  virtual ~UserReport() = default;

  /// A line of the log pane; `type` is "INFO", "WARNING" or "ERROR".
  virtual void Log(const std::string& text, const std::string& type) = 0;
  /// A line of the byte log. Called in the middle of an exchange, so it is shown later.
  virtual void Bytes(const std::string& line) = 0;
  /// A notice window; an empty text withdraws the last one.
  virtual void Error(const std::string& text) = 0;
  virtual void Success(const std::string& text) = 0;

  /// Runs `operation`. An exception must not pass through Qt, so its text becomes a notice and a log line.
  void Guard(const std::function<void()>& operation) {
    try {
      operation();
    } catch (const std::exception& error) {
      Error(error.what());
      Log(error.what(), "ERROR");
    }
  }
};

}  // namespace varkel
