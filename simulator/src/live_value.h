#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "VarkelCore/src/catalogue/var_info.h"

namespace varkel::sim {

/// How a variable changes while the sensor runs.
enum class LiveKind {
  kFixed,
  kWave,     ///< oscillates by about 2 % around its value
  kCounter,  ///< increases by one every ten seconds
  kSeconds,  ///< a running time
};

/// Only read-only variables that the page timer re-reads change, except those with options.
LiveKind LiveKindOf(const VarInfo& var);

/// The field's bytes at time `elapsed` after power-up; `base` at time 0. Variables with different `ordinal`
/// oscillate at different speeds, so that a page of them looks alive.
std::vector<std::uint8_t> LiveBytes(LiveKind kind, const VarInfo& var, std::span<const std::uint8_t> base,
                                    std::chrono::milliseconds elapsed, std::size_t ordinal);

}  // namespace varkel::sim
