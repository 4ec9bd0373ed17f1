#include "simulator/src/live_value.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <numbers>
#include <string>
#include <string_view>

#include "simulator/src/raw_number.h"

namespace varkel::sim {
namespace {

constexpr double kSwing = 0.02;
constexpr double kMinFloatSwing = 0.05;
constexpr double kShortestPeriodSeconds = 20.0;
constexpr double kPeriodStepSeconds = 7.0;
constexpr std::size_t kPeriods = 5;
constexpr std::chrono::seconds kCounterStep{10};

/// The tables do not mark counters, so they are recognised by their names.
bool IsCounterName(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  constexpr std::array<std::string_view, 4> kCounted = {"count", "errors", "packets", "pulses"};
  return std::any_of(kCounted.begin(), kCounted.end(),
                     [&](std::string_view word) { return name.find(word) != std::string::npos; });
}

std::vector<std::uint8_t> Advanced(std::span<const std::uint8_t> base, std::int64_t steps) {
  return IntegerBytes(IntegerOf(base, false) + static_cast<std::uint64_t>(steps), false, base.size());
}

std::vector<std::uint8_t> Swung(const NumberType& type, std::span<const std::uint8_t> base, double phase) {
  if (type.is_float) {
    const double value = FloatOf(base);
    return FloatBytes(value + std::max(kSwing * std::abs(value), kMinFloatSwing) * std::sin(phase),
                      base.size());
  }
  const IntegerBounds bounds = BoundsOf(type, base.size());
  const std::uint64_t raw = IntegerOf(base, type.is_signed);
  const double value =
      type.is_signed ? static_cast<double>(static_cast<std::int64_t>(raw)) : static_cast<double>(raw);
  const double swing = std::round(std::max(kSwing * std::abs(value), 1.0) * std::sin(phase));
  // Limited to the field's range, away from the 64-bit limits that a double can't represent exactly.
  if (value + swing < static_cast<double>(bounds.min) || value + swing > static_cast<double>(bounds.max)) {
    return {base.begin(), base.end()};
  }
  return IntegerBytes(raw + static_cast<std::uint64_t>(static_cast<std::int64_t>(swing)), type.is_signed,
                      base.size());
}

}  // namespace

LiveKind LiveKindOf(const VarInfo& var) {
  if (!var.timer_update || !var.set_cmd.empty() || !var.options.empty() || !var.option_labels.empty()) {
    return LiveKind::kFixed;
  }
  if (var.var_type == "DT") return LiveKind::kSeconds;
  const auto type = NumberTypeOf(var.var_type);
  if (!type) return LiveKind::kFixed;
  return !type->is_signed && IsCounterName(var.var_name) ? LiveKind::kCounter : LiveKind::kWave;
}

std::vector<std::uint8_t> LiveBytes(LiveKind kind, const VarInfo& var, std::span<const std::uint8_t> base,
                                    std::chrono::milliseconds elapsed, std::size_t ordinal) {
  const auto type = NumberTypeOf(var.var_type);
  switch (kind) {
    case LiveKind::kSeconds:
      return Advanced(base, std::chrono::floor<std::chrono::seconds>(elapsed).count());
    case LiveKind::kCounter:
      return Advanced(base, elapsed / kCounterStep);
    case LiveKind::kWave:
      if (type) {
        const double period =
            kShortestPeriodSeconds + kPeriodStepSeconds * static_cast<double>(ordinal % kPeriods);
        const double seconds = std::chrono::duration<double>(elapsed).count();
        return Swung(*type, base, 2.0 * std::numbers::pi * seconds / period);
      }
      break;
    case LiveKind::kFixed:
      break;
  }
  return {base.begin(), base.end()};
}

}  // namespace varkel::sim
