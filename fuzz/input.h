#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;
using Vector = std::vector<std::uint8_t>;

/// Ends the run with the name of the violated property, so that the fuzzer keeps the input.
inline void Require(bool holds, const char* property) {
  if (!holds) {
    std::fprintf(stderr, "violated property: %s\n", property);
    std::abort();
  }
}

inline bool Same(Bytes a, Bytes b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

/// Reads an input from the front; past its end it returns zeros and empty spans.
class Input {
 public:
  explicit Input(Bytes bytes) : rest_(bytes) {}

  bool empty() const { return rest_.empty(); }

  Bytes Take(std::size_t count) {
    const Bytes taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  Bytes Rest() { return Take(rest_.size()); }

  std::uint8_t Byte() {
    const Bytes byte = Take(1);
    return byte.empty() ? std::uint8_t{0} : byte[0];
  }

  /// Most significant byte first.
  template <std::unsigned_integral T>
  T Number() {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) value = (value << 8U) | Byte();
    return static_cast<T>(value);
  }

 private:
  Bytes rest_;
};

}  // namespace fuzz

/// Runs the target once on any bytes; always returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
/// Runs once before the inputs.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
