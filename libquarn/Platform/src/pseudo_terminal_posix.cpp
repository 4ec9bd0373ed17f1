#include "libquarn/Platform/src/pseudo_terminal.h"

// The kernel's own terminal header, as for the serial port: it can't be combined with <termios.h>.
#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace quarn::platform {
namespace {

using Clock = std::chrono::steady_clock;

std::int64_t MicrosecondsUntil(Clock::time_point deadline) {
  return std::max<std::int64_t>(std::chrono::ceil<std::chrono::microseconds>(deadline - Clock::now()).count(),
                                0);
}

/// A new terminal echoes its input until a client configures it.
bool MakeRaw(int port) {
  termios2 line{};
  if (ioctl(port, TCGETS2, &line) != 0) {
    return false;
  }
  line.c_iflag = 0;
  line.c_oflag = 0;
  line.c_lflag = 0;
  return ioctl(port, TCSETS2, &line) == 0;
}

}  // namespace

struct PseudoTerminal::Native {
  ~Native() {
    Close();
    if (wake >= 0) {
      close(wake);
    }
  }

  void Close() {
    for (int* descriptor : {&port, &master}) {
      if (*descriptor >= 0) {
        close(std::exchange(*descriptor, -1));
      }
    }
  }

  // 1: ready, 0: time-out, -1: pulled. With the lock held.
  int Wait(short events, std::int64_t timeout_us) const {
    const auto deadline = Clock::now() + std::chrono::microseconds(std::max<std::int64_t>(timeout_us, 0));
    std::int64_t left_us = timeout_us;
    while (!pulled) {
      std::array<pollfd, 2> entries{{{wake, POLLIN, 0}, {master, events, 0}}};
      constexpr std::int64_t kPerSecond = 1000000;
      const timespec limit{static_cast<std::time_t>(left_us / kPerSecond),
                           static_cast<long>(left_us % kPerSecond * 1000)};
      const int ready = ppoll(entries.data(), entries.size(), timeout_us < 0 ? nullptr : &limit, nullptr);
      if (ready == 0 || (ready > 0 && entries[0].revents == 0)) {
        return ready;
      }
      if (timeout_us >= 0) {
        left_us = MicrosecondsUntil(deadline);
      }
    }
    return -1;
  }

  std::atomic<bool> pulled{false};
  int wake = -1;  // readable once pulled; constant

  // Held shared while the descriptors below are used and exclusively while they are closed, so that no other
  // file with a reused number is ever read or written.
  std::shared_mutex mutex;
  int master = -1;
  int port = -1;  // the client's end, held open so that the line survives a client closing it
};

std::unique_ptr<PseudoTerminal> PseudoTerminal::Create() {
  auto native = std::make_unique<Native>();
  std::array<char, 128> name{};
  native->wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  native->master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  if (native->wake < 0 || native->master < 0 || grantpt(native->master) != 0 ||
      unlockpt(native->master) != 0 || ptsname_r(native->master, name.data(), name.size()) != 0) {
    return nullptr;
  }
  native->port = open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  if (native->port < 0 || !MakeRaw(native->port)) {
    return nullptr;
  }
  return std::unique_ptr<PseudoTerminal>(new PseudoTerminal(std::move(native), name.data()));
}

PseudoTerminal::PseudoTerminal(std::unique_ptr<Native> native, std::string name)
    : native_(std::move(native)), name_(std::move(name)) {}

PseudoTerminal::~PseudoTerminal() = default;

int PseudoTerminal::WaitReadable(std::int64_t timeout_us) {
  const std::shared_lock lock(native_->mutex);
  return native_->Wait(POLLIN, timeout_us);
}

int PseudoTerminal::Read(std::span<std::uint8_t> buffer) {
  const std::shared_lock lock(native_->mutex);
  if (native_->pulled) {
    return -1;
  }
  const ssize_t count = read(native_->master, buffer.data(), buffer.size());
  return count > 0 ? static_cast<int>(count) : 0;
}

bool PseudoTerminal::Write(std::span<const std::uint8_t> bytes, std::int64_t timeout_us) {
  const auto deadline = Clock::now() + std::chrono::microseconds(timeout_us);
  const std::shared_lock lock(native_->mutex);
  while (!bytes.empty() && !native_->pulled) {
    const ssize_t count = write(native_->master, bytes.data(), bytes.size());
    if (count > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
      continue;
    }
    const bool may_go_on = count == 0 || errno == EAGAIN || errno == EINTR;
    if (!may_go_on || native_->Wait(POLLOUT, MicrosecondsUntil(deadline)) <= 0) {
      return false;
    }
  }
  return bytes.empty();
}

std::uint32_t PseudoTerminal::BaudRate() {
  const std::shared_lock lock(native_->mutex);
  termios2 line{};
  const bool read = !native_->pulled && ioctl(native_->master, TCGETS2, &line) == 0;
  return read ? line.c_ospeed : 0;
}

void PseudoTerminal::Pull() {
  native_->pulled = true;
  const std::uint64_t one = 1;
  // Can only fail if the counter is full, and then the descriptor is already readable.
  [[maybe_unused]] const ssize_t written = write(native_->wake, &one, sizeof(one));
  const std::lock_guard lock(native_->mutex);
  native_->Close();
}

}  // namespace quarn::platform
