#include "simulator/src/sensor_log.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace varkel::sim {
namespace {

constexpr std::size_t kLines = 64;
constexpr std::size_t kSelectorSize = 2;
constexpr std::uint32_t kFirstSecond = 6 * 3600;
constexpr std::uint32_t kLongestPauseSeconds = 600;

/// A digit is put between the two texts.
struct Event {
  const char* head;
  const char* tail;
};
constexpr std::array<Event, 6> kEvents = {{
    {"0100 supply voltage 11.", " V, limit 12.0 V"},
    {"0101 motor speed deviation ", " rpm"},
    {"0102 window temperature 6", " C"},
    {"0103 time synchronisation lost for ", " s"},
    {"0104 point cloud buffer ", " frames behind"},
    {"0105 link to the host lost after ", " packets"},
}};

/// Gives the same numbers on every machine, unlike the standard library's distributions.
class Dice {
 public:
  explicit Dice(std::string_view seed) {
    for (const char letter : seed) state_ = state_ * kFactor + static_cast<unsigned char>(letter);
  }
  std::uint32_t Roll(std::uint32_t end) {
    state_ = state_ * kFactor + kAddend;
    return (state_ >> 16U) % end;
  }

 private:
  static constexpr std::uint32_t kFactor = 1664525;
  static constexpr std::uint32_t kAddend = 1013904223;
  std::uint32_t state_ = 1;
};

std::string EventText(Dice& dice) {
  const Event& event = kEvents[dice.Roll(static_cast<std::uint32_t>(kEvents.size()))];
  return event.head + std::to_string(dice.Roll(10)) + event.tail;
}

std::string TimeText(std::uint32_t second, std::uint32_t millisecond) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "2024-09-18 %02u:%02u:%02u.%03u", unsigned{second / 3600},
                unsigned{second / 60 % 60}, unsigned{second % 60}, unsigned{millisecond});
  return text.data();
}

}  // namespace

std::vector<std::uint8_t> SensorLog(const std::string& name) {
  Dice dice(name);
  std::string text;
  std::uint32_t second = kFirstSecond;
  for (std::size_t line = 0; line < kLines; ++line) {
    second += 1 + dice.Roll(kLongestPauseSeconds);
    text += TimeText(second, dice.Roll(1000)) + " [" + name + "] " + EventText(dice) + "\n";
  }
  return {text.begin(), text.end()};
}

std::optional<std::vector<std::uint8_t>> OperationLogPart(std::span<const std::uint8_t> selector) {
  if (selector.size() != kSelectorSize || selector[0] > 1 || selector[1] > 1) return std::nullopt;
  return SensorLog(std::string(selector[1] == 0 ? "BSW" : "ASW") +
                   (selector[0] == 0 ? " WARNING" : " ERROR"));
}

}  // namespace varkel::sim
