#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace varkel::sim {

/// A log of that name: a few kilobytes of text lines, always the same ones for one name.
std::vector<std::uint8_t> SensorLog(const std::string& name);

/// The part of the operation log that two selector bytes name: the first is 0 for warnings and 1 for errors,
/// the second basic software (0) from application software (1). Nothing for other selectors.
std::optional<std::vector<std::uint8_t>> OperationLogPart(std::span<const std::uint8_t> selector);

}  // namespace varkel::sim
