#pragma once

#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace quarn::test {

/// A serial line: the code under test opens `name()`, this is the sensor's end of it.
class PseudoTerminal {
 public:
  PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    std::array<char, 128> name{};
    if (master_ >= 0 && grantpt(master_) == 0 && unlockpt(master_) == 0 &&
        ptsname_r(master_, name.data(), name.size()) == 0) {
      name_ = name.data();
    }
  }
  ~PseudoTerminal() { Pull(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  const std::string& name() const { return name_; }

  bool Write(std::span<const std::uint8_t> bytes) const {
    return write(master_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }

  /// Reads until `enough` says so of what has come, ten seconds at most.
  std::vector<std::uint8_t> ReadUntil(
      const std::function<bool(std::span<const std::uint8_t>)>& enough) const {
    std::vector<std::uint8_t> all;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!enough(all) && std::chrono::steady_clock::now() < deadline) {
      pollfd entry{master_, POLLIN, 0};
      poll(&entry, 1, 10);
      std::array<std::uint8_t, 4096> block;
      const ssize_t count = read(master_, block.data(), block.size());
      if (count > 0) all.insert(all.end(), block.begin(), block.begin() + count);
    }
    return all;
  }
  std::vector<std::uint8_t> Read(std::size_t size) const {
    return ReadUntil([size](std::span<const std::uint8_t> all) { return all.size() >= size; });
  }

  /// The rate that the line was opened at.
  unsigned rate() const {
    termios2 line{};
    return ioctl(master_, TCGETS2, &line) == 0 ? line.c_ospeed : 0;
  }

  /// The line is pulled out.
  void Pull() {
    if (master_ >= 0) close(master_);
    master_ = -1;
  }

 private:
  int master_;
  std::string name_;
};

}  // namespace quarn::test
