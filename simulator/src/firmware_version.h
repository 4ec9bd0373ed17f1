#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace varkel::sim {

/// The version in a package's first line ("VARKEL-SIM FIRMWARE 1.2.3.4 2024-10-01" and a line feed), as the
/// user interface shows it: "1.2.3.4 (2024-10-01)". nullopt for any other beginning, and for numbers that
/// don't fit a version's fields.
std::optional<std::string> FirmwareVersionIn(std::span<const std::uint8_t> package);

}  // namespace varkel::sim
