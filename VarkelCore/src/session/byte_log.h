#pragma once

#include <atomic>

namespace varkel {

/// Whether the bytes of exchanges go to the log pane. Thread-safe.
class ByteLog {
 public:
  void set_on(bool on) { on_ = on; }
  bool IsWanted() const { return on_ && quiet_ == 0; }

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
  std::atomic<bool> on_ = false;
  std::atomic<int> quiet_ = 0;  ///< operations that stay out of the log
};

}  // namespace varkel
