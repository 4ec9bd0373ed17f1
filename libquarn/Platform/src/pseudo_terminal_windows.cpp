#include "libquarn/Platform/src/pseudo_terminal.h"

namespace quarn::platform {

/// Windows has no serial port whose far end could be a program.
struct PseudoTerminal::Native {};

std::unique_ptr<PseudoTerminal> PseudoTerminal::Create() {
  return nullptr;
}

PseudoTerminal::~PseudoTerminal() = default;

int PseudoTerminal::WaitReadable(std::int64_t /*timeout_us*/) {
  return -1;
}

int PseudoTerminal::Read(std::span<std::uint8_t> /*buffer*/) {
  return -1;
}

bool PseudoTerminal::Write(std::span<const std::uint8_t> /*bytes*/, std::int64_t /*timeout_us*/) {
  return false;
}

std::uint32_t PseudoTerminal::BaudRate() {
  return 0;
}

void PseudoTerminal::Pull() {}

}  // namespace quarn::platform
