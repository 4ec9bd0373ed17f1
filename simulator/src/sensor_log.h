#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace varkel::sim {

/// A log with that name: a few kilobytes of text lines, always the same for the same name.
std::vector<std::uint8_t> SensorLog(const std::string& name);

/// The part of the operation log selected by two bytes: the first is 0 for warnings and 1 for errors, the
/// second 0 for basic and 1 for application software. nullopt for other selectors.
std::optional<std::vector<std::uint8_t>> OperationLogPart(std::span<const std::uint8_t> selector);

}  // namespace varkel::sim
