#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

#include "libquarn/Source/src/serial_exchange.h"

namespace quarn::lidar {

/// Firmware is sent as a start frame, data frames and an end frame, each answered before the next is sent. A
/// frame is sent again, up to twice, when its reply is invalid, answers another frame or is missing.

/// Bytes in a data frame; progress is counted in these blocks.
inline constexpr std::size_t kOtaBlockSize = 1024;

/// Types of the frames: start (length, mode or component type; no data), data (block number from 0, number of
/// blocks), end (CRC-32/MPEG-2 of all data, length; no data).
struct OtaFrameTypes {
  std::uint8_t start;
  std::uint8_t data;
  std::uint8_t end;
};
inline constexpr OtaFrameTypes kPackageFrames = {0x01, 0x02, 0x03};
inline constexpr OtaFrameTypes kComponentFrames = {0x11, 0x12, 0x13};

/// The number of data frames that `size` bytes need.
constexpr std::size_t OtaBlocks(std::size_t size) {
  return size / kOtaBlockSize + (size % kOtaBlockSize != 0 ? 1 : 0);
}

/// Sends a whole package; fails with the status with which the sensor ended the transfer (1 to 255) or the
/// exchange's code. `mode`: 0 application and FPGA, 1 PBL. `progress` becomes the number of blocks
/// transferred. Packages of 4 GiB and more are refused with SerialExchange::kNotSent.
Exchanged<void> SendOtaPackage(SerialExchange& exchange, std::span<const std::uint8_t> package,
                               std::uint32_t mode, std::atomic<std::uint32_t>& progress);

/// The same for one component of a package; adds the blocks transferred to `progress`.
Exchanged<void> SendOtaComponent(SerialExchange& exchange, std::span<const std::uint8_t> component,
                                 std::uint8_t type, std::atomic<std::uint32_t>& progress);

/// The partition that a sensor runs from. New firmware is written to the other one.
enum class Partition : std::uint8_t { kA = 0, kB = 1 };

/// Makes the sensor ready to be written to (mode 4): its partition, or the exchange's code;
/// SerialExchange::kWrongReply also for a malformed reply.
Exchanged<Partition> ChangeMode(SerialExchange& exchange, std::uint8_t mode);

}  // namespace quarn::lidar
