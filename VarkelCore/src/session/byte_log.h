#pragma once

#include <atomic>
#include <memory>

namespace varkel {

/// Whether the user wants the bytes of exchanges in the log pane; one for the tool, whatever it is connected
/// to.
using ByteLogSwitch = std::atomic<bool>;

/// Decides for one session whether the bytes of an exchange go to the log pane. Thread-safe.
class ByteLog {
 public:
  /// `wanted` outlives this object.
  explicit ByteLog(const ByteLogSwitch& wanted) : wanted_(wanted) {}

  bool IsWanted() const { return wanted_ && quiet_ == 0; }

  /// Keeps exchanges out of the byte log while it lives.
  class Quiet {
   public:
    explicit Quiet(ByteLog& log) : log_(log) { ++log_.quiet_; }
    ~Quiet() { --log_.quiet_; }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

   private:
    ByteLog& log_;
  };

 private:
  const ByteLogSwitch& wanted_;
  std::atomic<int> quiet_ = 0;  ///< operations that stay out of the log
};

}  // namespace varkel
