#include "libquarn/Platform/src/pseudo_terminal.h"

// The kernel's own terminal header, as for the serial port: it can't be combined with <termios.h>.
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <shared_mutex>
#include <utility>

#include "libquarn/Platform/src/descriptor_posix.h"
#include "libquarn/Platform/src/poll_posix.h"

namespace quarn::platform {
namespace {

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
  void Close() {
    port.Reset();
    master.Reset();
  }

  // 1: ready, 0: time-out, -1: pulled. With the lock held.
  int Wait(short events, std::int64_t timeout_us) const {
    if (pulled) {
      return -1;
    }
    std::array<pollfd, 2> entries{{{wake.get(), POLLIN, 0}, {master.get(), events, 0}}};
    const int ready = Poll(entries, std::chrono::microseconds(timeout_us));
    return ready > 0 && entries[0].revents != 0 ? -1 : ready;
  }

  std::atomic<bool> pulled{false};
  Descriptor wake;  // readable once pulled; constant

  // Held shared while the descriptors below are used and exclusively while they are closed, so that no other
  // file with a reused number is ever read or written.
  std::shared_mutex mutex;
  Descriptor master;
  Descriptor port;  // the client's end, held open so that the line survives a client closing it
};

std::unique_ptr<PseudoTerminal> PseudoTerminal::Create() {
  auto native = std::make_unique<Native>();
  std::array<char, 128> name{};
  native->wake.Reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  native->master.Reset(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  const int master = native->master.get();
  if (native->wake.get() < 0 || master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 ||
      ptsname_r(master, name.data(), name.size()) != 0) {
    return nullptr;
  }
  native->port.Reset(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  if (native->port.get() < 0 || !MakeRaw(native->port.get())) {
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
  const ssize_t count = read(native_->master.get(), buffer.data(), buffer.size());
  return count > 0 ? static_cast<int>(count) : 0;
}

bool PseudoTerminal::Write(std::span<const std::uint8_t> bytes, std::int64_t timeout_us) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::microseconds(timeout_us);
  const std::shared_lock lock(native_->mutex);
  while (!bytes.empty() && !native_->pulled) {
    const ssize_t count = write(native_->master.get(), bytes.data(), bytes.size());
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
  const bool read = !native_->pulled && ioctl(native_->master.get(), TCGETS2, &line) == 0;
  return read ? line.c_ospeed : 0;
}

void PseudoTerminal::Pull() {
  native_->pulled = true;
  const std::uint64_t one = 1;
  // Can only fail if the counter is full, and then the descriptor is already readable.
  [[maybe_unused]] const ssize_t written = write(native_->wake.get(), &one, sizeof(one));
  const std::lock_guard lock(native_->mutex);
  native_->Close();
}

}  // namespace quarn::platform
