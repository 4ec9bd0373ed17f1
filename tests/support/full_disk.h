#pragma once

#include <sys/resource.h>

#include <csignal>

/// While it exists, writing more than `bytes` to a file fails as on a full disk, including this program's
/// output.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes, void (*action)(int) = SIG_IGN) : action_(std::signal(SIGXFSZ, action)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, action_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  void (*const action_)(int);
  rlimit before_{};
};
