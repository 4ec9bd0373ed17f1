#include "simulator/src/firmware_version.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <regex>
#include <system_error>

namespace varkel::sim {
namespace {

/// Maximum length of a line that names a version: a package may contain no line feed at all.
constexpr std::size_t kLongestLine = 80;

struct Bounds {
  std::uint32_t min;
  std::uint32_t max;
};
/// Major, minor, patch, build, year, month, day.
constexpr std::array<Bounds, 7> kBounds = {
    {{0, 0xFF}, {0, 0xFF}, {0, 0xFF}, {0, 0xFF}, {0, 9999}, {1, 12}, {1, 31}}};

bool IsWithin(const std::string& digits, const Bounds& bounds) {
  std::uint32_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value);
  return error == std::errc{} && stop == end && value >= bounds.min && value <= bounds.max;
}

}  // namespace

std::optional<std::string> FirmwareVersionIn(std::span<const std::uint8_t> package) {
  const auto head = package.first(std::min(package.size(), kLongestLine));
  const auto end = std::find(head.begin(), head.end(), std::uint8_t{'\n'});
  if (end == head.end()) return std::nullopt;
  const std::string line(head.begin(), end);
  static const std::regex kForm(
      R"(VARKEL-SIM FIRMWARE ((\d+)\.(\d+)\.(\d+)\.(\d+)) ((\d{4})-(\d{2})-(\d{2})))");
  std::smatch parts;
  if (!std::regex_match(line, parts, kForm)) return std::nullopt;
  constexpr std::array<std::size_t, kBounds.size()> kNumbers = {2, 3, 4, 5, 7, 8, 9};
  for (std::size_t i = 0; i < kNumbers.size(); ++i) {
    if (!IsWithin(parts[kNumbers[i]].str(), kBounds[i])) return std::nullopt;
  }
  return parts[1].str() + " (" + parts[6].str() + ")";
}

}  // namespace varkel::sim
