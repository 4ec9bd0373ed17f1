#pragma once

#include <atomic>
#include <memory>

namespace varkel {

/// Whether the user wants the bytes of exchanges in the log pane; one switch for the whole tool.
using ByteLogSwitch = std::atomic<bool>;

/// Decides for one session whether the bytes of an exchange are shown in the log pane. Thread-safe.
class ByteLog {
 public:
  /// `wanted` outlives this object.
  explicit ByteLog(const ByteLogSwitch& wanted) : wanted_(wanted) {}

  /// Called on the thread of the exchange.
  bool IsWanted() const { return wanted_ && quiet_ == 0; }

  /// Keeps the exchanges of its thread out of the byte log while it exists. It is per thread so that a
  /// background refresh does not hide a command that the user sends at the same time.
  class Quiet {
   public:
    Quiet() { ++quiet_; }
    ~Quiet() { --quiet_; }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
  };

 private:
  const ByteLogSwitch& wanted_;
  static inline thread_local int quiet_ = 0;  ///< operations of this thread that stay out of the log
};

}  // namespace varkel
