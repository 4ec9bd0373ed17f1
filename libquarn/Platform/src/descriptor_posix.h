#pragma once

#include <unistd.h>

#include <utility>

namespace quarn::platform {

/// Owns a file descriptor; negative: none. Only this folder's sources for POSIX systems include this.
class Descriptor {
 public:
  explicit Descriptor(int value = -1) : value_(value) {}
  ~Descriptor() { Reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return value_; }

  /// Closes it and owns `value` from now on.
  void Reset(int value = -1) {
    if (const int old = std::exchange(value_, value); old >= 0) {
      close(old);
    }
  }

 private:
  int value_;
};

}  // namespace quarn::platform
