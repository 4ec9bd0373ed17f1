#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string>

namespace varkel {

/// The set command that carries the start angles of the field of view.
inline constexpr char kFovSetCommand[] = "0x22";

inline constexpr std::size_t kFovSectors = 5;

/// The sensor's field of view: five sectors in degrees, five start angles and then five end angles.
using FovAngles = std::array<float, 2 * kFovSectors>;

/// The full circle, shown until the sensor reports its angles.
inline constexpr FovAngles kDefaultFov = {0, 0, 0, 0, 0, 360, 360, 360, 360, 360};

/// Degrees with one decimal, whatever the locale.
inline std::string AngleText(float degrees) {
  constexpr std::size_t kLongest = 64;
  std::array<char, kLongest> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), degrees, std::chars_format::fixed, 1).ptr;
  return {text.data(), end};
}

}  // namespace varkel
