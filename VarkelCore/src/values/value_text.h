#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace varkel {

/// Why a reply field could not be shown.
enum class ValueFault { kNone, kEmpty, kMacSize, kVersionSize, kNumberSize, kUnsupportedType };

struct ValueText {
  ValueFault fault = ValueFault::kNone;
  std::string text;  ///< the shown text; empty if there is a fault
};

/// Turns a field of a get reply into the text that the user sees. `bytes` is the field alone, multi-byte
/// numbers big-endian; `coefficient` scales the numeric types. Never throws, whatever the bytes.
ValueText BytesToText(const std::string& var_type, std::span<const std::uint8_t> bytes, float coefficient);

}  // namespace varkel
