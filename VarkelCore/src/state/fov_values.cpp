#include "VarkelCore/src/state/fov_values.h"

#include <array>
#include <cmath>
#include <cstdint>

#include "libquarn/Platform/src/hex_text.h"

namespace varkel {

namespace {

constexpr float kTenths = 10.0F;

const char* Edge(std::size_t index) {
  return index < kFovSectors ? "start" : "end";
}

std::string Sector(std::size_t index) {
  return std::to_string(index % kFovSectors + 1);
}

std::string RawAngle(float degrees) {
  const auto tenths = static_cast<std::uint16_t>(std::lround(degrees * kTenths));
  return quarn::lidar::HexText(
      std::array{static_cast<std::uint8_t>(tenths >> 8U), static_cast<std::uint8_t>(tenths)});
}

}  // namespace

VarInfo* FovChannel(const ConfigParser& catalogue) {
  const auto carried = catalogue.set_cmd_map().find(kFovSetCommand);
  if (carried == catalogue.set_cmd_map().end() || carried->second.empty()) return nullptr;
  VarInfo* const channel = carried->second.front();
  return channel->get_cmd.empty() ? nullptr : channel;
}

std::string FovAngleId(const VarInfo& channel, std::size_t index) {
  return channel.var_id + "-" + Edge(index) + "-" + Sector(index);
}

std::string FovAngleName(const VarInfo& channel, std::size_t index) {
  return channel.var_name + " " + Edge(index) + " " + Sector(index);
}

std::optional<std::size_t> FindFovAngle(const ConfigParser& catalogue, const std::string& key) {
  const VarInfo* const channel = FovChannel(catalogue);
  for (std::size_t i = 0; channel != nullptr && i < 2 * kFovSectors; ++i) {
    if (key == FovAngleId(*channel, i) || key == FovAngleName(*channel, i)) return i;
  }
  return std::nullopt;
}

void AppendFovAngles(const ConfigParser& catalogue, const VarInfo& channel, const FovAngles& angles,
                     std::size_t sectors, std::vector<StateValue>& values) {
  for (std::size_t i = 0; i < 2 * kFovSectors; ++i) {
    if (i % kFovSectors >= sectors) continue;
    StateValue value = MakeStateValue(catalogue, channel, AngleText(angles.at(i)), RawAngle(angles.at(i)));
    value.id = FovAngleId(channel, i);
    value.name = FovAngleName(channel, i);
    value.unit = "deg";
    values.push_back(std::move(value));
  }
}

}  // namespace varkel
