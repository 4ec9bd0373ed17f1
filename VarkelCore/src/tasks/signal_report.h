#pragma once

#include <QString>
#include <functional>
#include <string>

#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// Delivers reports on the thread that owns the event queue, in the order in which they were made.
/// Thread-safe.
class SignalReport : public UserReport {
 public:
  /// The functions that receive reports on the owner's thread.
  struct Sinks {
    std::function<void(const QString& text, const QString& type)> log;
    std::function<void(const QString& text)> error;
    std::function<void(const QString& text)> success;
  };

  SignalReport(EventQueue& events, Sinks sinks) : events_(events), sinks_(std::move(sinks)) {}

  void Log(const std::string& text, const std::string& type) override {
    events_.Post([this, text = QString::fromStdString(text), type = QString::fromStdString(type)] {
      sinks_.log(text, type);
    });
  }
  void Bytes(const std::string& line) override {
    events_.PostLater(
        [this, text = QString::fromStdString(line)] { sinks_.log(text, QStringLiteral("BYTES")); });
  }
  void Error(const std::string& text) override {
    events_.Post([this, text = QString::fromStdString(text)] { sinks_.error(text); });
  }
  void Success(const std::string& text) override {
    events_.Post([this, text = QString::fromStdString(text)] { sinks_.success(text); });
  }

 private:
  EventQueue& events_;
  const Sinks sinks_;
};

}  // namespace varkel
