// The simulated sensor's serial lines on systems without pseudo-terminals. Test programs link this file
// instead of pseudo_terminal_windows.cpp, which the linker then leaves out.
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "libquarn/Platform/src/pseudo_terminal.h"
#include "tests/support/hosted_line.h"

namespace quarn::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{1};  // gives a writer its turn
constexpr std::size_t kBlockSize = 4096;

}  // namespace

struct PseudoTerminal::Native {
  /// The client's bytes that have not been read yet; asks the host if there are none. Call with the lock
  /// held.
  bool HasBytes() {
    if (pulled) return false;
    if (bytes.empty()) {
      bytes.resize(kBlockSize);
      bytes.resize(static_cast<std::size_t>(line.Read(bytes)));
    }
    return !bytes.empty();
  }

  std::atomic<bool> pulled{false};
  std::mutex mutex;  // guards the members below: one request at a time
  test::HostedLine line;
  std::vector<std::uint8_t> bytes;
};

std::unique_ptr<PseudoTerminal> PseudoTerminal::Create() {
  auto native = std::make_unique<Native>();
  const std::string name = native->line.name();
  return std::unique_ptr<PseudoTerminal>(new PseudoTerminal(std::move(native), name));
}

PseudoTerminal::PseudoTerminal(std::unique_ptr<Native> native, std::string name)
    : native_(std::move(native)), name_(std::move(name)) {}

PseudoTerminal::~PseudoTerminal() = default;

int PseudoTerminal::WaitReadable(std::int64_t timeout_us) {
  const auto deadline = Clock::now() + std::chrono::microseconds(timeout_us);
  while (!native_->pulled) {
    {
      const std::lock_guard lock(native_->mutex);
      if (native_->HasBytes()) return 1;
    }
    if (timeout_us >= 0 && Clock::now() >= deadline) return 0;
    std::this_thread::sleep_for(kPause);
  }
  return -1;
}

int PseudoTerminal::Read(std::span<std::uint8_t> buffer) {
  const std::lock_guard lock(native_->mutex);
  if (native_->pulled) return -1;
  const std::size_t count = std::min(buffer.size(), native_->bytes.size());
  std::copy_n(native_->bytes.begin(), count, buffer.begin());
  native_->bytes.erase(native_->bytes.begin(), native_->bytes.begin() + static_cast<std::ptrdiff_t>(count));
  return static_cast<int>(count);
}

bool PseudoTerminal::Write(std::span<const std::uint8_t> bytes, std::int64_t /*the host's own patience*/) {
  const std::lock_guard lock(native_->mutex);
  while (!bytes.empty() && !native_->pulled) {
    const auto block = bytes.first(std::min(bytes.size(), kBlockSize));
    if (!native_->line.Write(block)) return false;
    bytes = bytes.subspan(block.size());
  }
  return bytes.empty();
}

std::uint32_t PseudoTerminal::BaudRate() {
  const std::lock_guard lock(native_->mutex);
  return native_->pulled ? 0 : native_->line.BaudRate();
}

void PseudoTerminal::Pull() {
  if (native_->pulled.exchange(true)) return;
  const std::lock_guard lock(native_->mutex);
  native_->line.Pull();
}

}  // namespace quarn::platform
