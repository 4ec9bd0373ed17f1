#pragma once

#include <cstdint>

namespace quarn::lidar {

/// The KTC commands that the code knows by number; all others come from the model tables.

/// Writes the start angles of a channel's fields of view (channel_fov.h).
inline constexpr std::uint8_t kWriteChannelFovCmd = 0x22;
/// Reads the fields of view.
inline constexpr std::uint8_t kQueryMultiFovCmd = 0x23;
/// Carries commands without a command byte of their own: four-byte commands, with their code at the front of
/// the payload, and frames for the serial line behind the sensor (ktc_serial_client.h).
inline constexpr std::uint8_t kKtcExtensionCmd = 0xFF;

}  // namespace quarn::lidar
