#include "libquarn/Platform/src/serial_port.h"

// The kernel's own terminal header: only its structure supports any baud rate. It can't be combined with the
// C library's <termios.h>.
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include "libquarn/Platform/src/descriptor_posix.h"
#include "libquarn/Platform/src/poll_posix.h"

namespace quarn::platform {
namespace {

using Clock = std::chrono::steady_clock;

// Deviation from the requested rate at which a line still works, in percent.
constexpr std::uint32_t kRateTolerance = 3;

bool IsNear(std::uint32_t rate, std::uint32_t wanted) {
  const std::uint32_t distance = rate > wanted ? rate - wanted : wanted - rate;
  return std::uint64_t{distance} * 100 <= std::uint64_t{wanted} * kRateTolerance;
}

std::uint32_t ReadRate(int port) {
  termios2 line{};
  return ioctl(port, TCGETS2, &line) == 0 ? line.c_ospeed : 0;
}

bool Configure(int port, std::uint32_t baud_rate) {
  termios2 line{};
  if (baud_rate == 0 || ioctl(port, TCGETS2, &line) != 0) {
    return false;
  }
  line.c_iflag = 0;
  line.c_oflag = 0;
  line.c_lflag = 0;
  // Input uses the output rate unless it has its own.
  line.c_cflag = CS8 | CREAD | CLOCAL | BOTHER;
  line.c_ispeed = baud_rate;
  line.c_ospeed = baud_rate;
  // With a minimum of one byte, reads can distinguish an idle line from a lost one.
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
  return ioctl(port, TCSETS2, &line) == 0 && IsNear(ReadRate(port), baud_rate);
}

// The terminal's exclusive mode does not stop an administrator, but the lock does.
bool Claim(int port) {
  return flock(port, LOCK_EX | LOCK_NB) == 0 && ioctl(port, TIOCEXCL) == 0;
}

}  // namespace

struct SerialPort::Native {
  Native(int port_in, int wake_in) : port(port_in), wake(wake_in) {}

  // 1: the port is ready (or gone, which a read shows), 0: time-out, -1: interrupted, or waiting failed.
  int Wait(short events, std::int64_t timeout_us) const {
    std::array<pollfd, 2> entries{{{wake.get(), POLLIN, 0}, {port.get(), events, 0}}};
    const int ready = Poll(entries, std::chrono::microseconds(timeout_us));
    if (ready <= 0) {
      return ready;
    }
    return entries[0].revents != 0 || (entries[1].revents & POLLNVAL) != 0 ? -1 : 1;
  }

  const Descriptor port;
  const Descriptor wake;  // readable once interrupted
};

std::unique_ptr<SerialPort> SerialPort::Open(const std::string& name, std::uint32_t baud_rate) {
  auto native = std::make_unique<Native>(open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC),
                                         eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (native->port.get() < 0 || native->wake.get() < 0 || !Claim(native->port.get())) {
    return nullptr;
  }
  std::unique_ptr<SerialPort> port(new SerialPort(std::move(native)));
  return Configure(port->native_->port.get(), baud_rate) ? std::move(port) : nullptr;
}

SerialPort::SerialPort(std::unique_ptr<Native> native) : native_(std::move(native)) {}

SerialPort::~SerialPort() {
  // A pseudo-terminal would otherwise stay exclusive while its other side is open.
  ioctl(native_->port.get(), TIOCNXCL);
}

int SerialPort::WaitReadable(std::int64_t timeout_us) {
  const int ready = usable_ ? native_->Wait(POLLIN, timeout_us) : -1;
  return ready < 0 ? Fail() : ready;
}

int SerialPort::Read(std::span<std::uint8_t> buffer) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(kSerialReadTotalMs);
  std::size_t filled = 0;
  while (filled < buffer.size()) {
    const ssize_t received = read(native_->port.get(), buffer.data() + filled, buffer.size() - filled);
    if (received > 0) {
      filled += static_cast<std::size_t>(received);
    } else if (received < 0 && errno == EINTR) {
      continue;
    } else if (received == 0 || errno != EAGAIN) {
      return filled > 0 ? static_cast<int>(filled) : Fail();  // bytes that came before the break still count
    }
    const std::int64_t left_us =
        std::min(MicrosecondsUntil(deadline), std::int64_t{kSerialReadIntervalMs} * 1000);
    const int ready = left_us > 0 ? native_->Wait(POLLIN, left_us) : 0;
    if (ready < 0) {
      return Fail();
    }
    if (ready == 0) {
      break;
    }
  }
  return static_cast<int>(filled);
}

int SerialPort::Write(std::span<const std::uint8_t> bytes) {
  const auto allowed =
      std::chrono::milliseconds(kSerialWriteTotalMs) +
      std::chrono::milliseconds(kSerialWritePerByteMs) * static_cast<std::int64_t>(bytes.size());
  const auto deadline = Clock::now() + allowed;
  std::size_t written = 0;
  while (written < bytes.size()) {
    if (!usable_) {
      return -1;
    }
    const ssize_t count = write(native_->port.get(), bytes.data() + written, bytes.size() - written);
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno == EAGAIN) {
      const int ready = native_->Wait(POLLOUT, MicrosecondsUntil(deadline));
      if (ready < 0) {
        return Fail();
      }
      if (ready == 0) {
        break;
      }
    } else if (errno != EINTR) {
      return Fail();
    }
  }
  return static_cast<int>(written);
}

void SerialPort::ClearInput() {
  ioctl(native_->port.get(), TCFLSH, TCIFLUSH);
}

void SerialPort::Interrupt() {
  usable_ = false;
  const std::uint64_t one = 1;
  // Can only fail if the counter is full, and then the descriptor is already readable.
  [[maybe_unused]] const ssize_t written = write(native_->wake.get(), &one, sizeof(one));
}

std::uint32_t SerialPort::BaudRate() const {
  return ReadRate(native_->port.get());
}

int SerialPort::Fail() {
  usable_ = false;
  return -1;
}

}  // namespace quarn::platform
