#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#ifdef _WIN32
#include "tests/support/hosted_line.h"
#else
#include "libquarn/Platform/src/pseudo_terminal.h"
#endif

namespace quarn::test {

#ifdef _WIN32
using Line = HostedLine;
#else
using Line = platform::PseudoTerminal;
#endif

/// A serial line: the code under test opens `name()`, and this is the sensor's end.
class PseudoTerminal {
 public:
  PseudoTerminal() : line_(Line::Create()) {}

  const std::string& name() const { return line_->name(); }

  bool Write(std::span<const std::uint8_t> bytes) const { return line_->Write(bytes, kPatienceUs); }

  /// Reads until `enough` accepts the bytes received so far, for at most ten seconds.
  std::vector<std::uint8_t> ReadUntil(
      const std::function<bool(std::span<const std::uint8_t>)>& enough) const {
    std::vector<std::uint8_t> all;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::microseconds(kPatienceUs);
    while (!enough(all) && std::chrono::steady_clock::now() < deadline) {
      constexpr std::int64_t kLookUs = 10000;
      if (line_->WaitReadable(kLookUs) < 0) break;
      std::array<std::uint8_t, 4096> block;
      const int count = line_->Read(block);
      if (count > 0) all.insert(all.end(), block.begin(), block.begin() + count);
    }
    return all;
  }
  std::vector<std::uint8_t> Read(std::size_t size) const {
    return ReadUntil([size](std::span<const std::uint8_t> all) { return all.size() >= size; });
  }

  /// The rate at which the line was opened.
  unsigned rate() const { return line_->BaudRate(); }

  /// Unplugs the line.
  void Pull() { line_->Pull(); }

 private:
  static constexpr std::int64_t kPatienceUs = 10'000'000;

  const std::unique_ptr<Line> line_;
};

}  // namespace quarn::test
