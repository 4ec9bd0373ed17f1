#include "VarkelCore/src/values/range_check.h"

#include <cmath>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <utility>

#include "libquarn/Platform/src/byte_text.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

using quarn::lidar::ReadByteText;

bool HasRange(const VarInfo& var) {
  return var.range_min != 0 && var.range_max != 0;
}

RangeVerdict VerdictOf(RangeFault fault) {
  return {fault, false, {}};
}

RangeVerdict Within(const VarInfo& var, double value) {
  const bool within = var.range_min <= value && value <= var.range_max;
  return VerdictOf(within ? RangeFault::kNone : RangeFault::kOutOfRange);
}

/// The current value and the field length, which for a "Shared Secret Key" depends on the payload.
std::pair<std::string, std::uint32_t> Present(const ConfigParser& catalogue, const VarInfo& var) {
  const auto lock = catalogue.LockValues();
  return {var.current_val, var.var_len};
}

RangeVerdict NotANumber(const std::exception& error) {
  const bool does_not_fit = dynamic_cast<const std::out_of_range*>(&error) != nullptr;
  return {RangeFault::kNotANumber, does_not_fit, error.what()};
}

}  // namespace

RangeVerdict JudgeValue(const ConfigParser& catalogue, const VarInfo& var) {
  if (var.var_type == "string" || !HasRange(var)) return {};
  try {
    const float shown = quarn::lidar::TextToFloat(Present(catalogue, var).first);
    return Within(var, std::trunc(static_cast<double>(shown * var.set_coefficient)));
  } catch (const std::exception& error) {
    return NotANumber(error);
  }
}

RangeVerdict JudgePageValue(const ConfigParser& catalogue, const VarInfo& var) {
  if (var.permission == 0 || var.var_type == "string") return {};
  const auto [value, length] = Present(catalogue, var);
  if (var.var_type == "raw") {
    return VerdictOf(value.size() > length ? RangeFault::kOutOfRange : RangeFault::kNone);
  }
  if (var.var_type == "IP") {
    return VerdictOf(ReadByteText(value, {'.', 4, 10, 1, 3}) ? RangeFault::kNone : RangeFault::kIpFormat);
  }
  if (var.var_type == "MAC") {
    return VerdictOf(ReadByteText(value, {':', 6, 16, 2, 2}) ? RangeFault::kNone : RangeFault::kMacFormat);
  }
  try {
    const int number = quarn::lidar::TextToInt(value);
    return HasRange(var) ? Within(var, number) : RangeVerdict{};
  } catch (const std::exception& error) {
    return NotANumber(error);
  }
}

}  // namespace varkel
