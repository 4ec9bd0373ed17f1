#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "libquarn/Source/src/ota_transfer.h"

namespace varkel {

/// The firmware package of a Marvo sensor: a header of 56 bytes (numbers little-endian), then the data of up
/// to five components. Offsets count from the header's end. A package is outside data: nothing here reads
/// beyond it or takes memory for a size that it claims.

inline constexpr std::size_t kMarvoHeaderSize = 56;

struct OtaComponentRef {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  bool present = false;
};

struct OtaPackageHeader {
  std::uint32_t total_size = 0;  ///< what the package says of itself; it counts for nothing
  std::uint8_t flags = 0;
  OtaComponentRef bmb_app_a;
  OtaComponentRef bmb_app_b;
  OtaComponentRef bmb_fpga;
  OtaComponentRef tmb_fpga;
  OtaComponentRef tmb_param;
};

enum class MarvoPackageFault : std::uint8_t { kNone, kTooShort, kWrongMagic };

/// Reads the header; a component without its flag stays absent, whatever its fields say.
MarvoPackageFault ParseMarvoPackage(std::span<const std::uint8_t> package, OtaPackageHeader& header);

/// A component as it goes to the sensor.
struct OtaComponent {
  std::string name;
  std::uint8_t type = 0;
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  bool present = false;
};

/// The present components in the order in which a sensor that runs from `running` takes them. Of the two
/// applications only the one for the other partition is among them.
std::vector<OtaComponent> ComponentsToSend(const OtaPackageHeader& header, quarn::lidar::Partition running);

struct ExtractedComponent {
  std::span<const std::uint8_t> data;  ///< within the package; empty when it holds no such range
  bool out_of_range = false;           ///< the header's own range test failed
};

/// The component's bytes. FPGA images of more than 1024 bytes have a preamble of 1024 that is not sent.
/// The range test is the sensor family's own, in 32-bit arithmetic that wraps; a range that passes it by
/// wrapping around lies outside of the package all the same and is empty.
ExtractedComponent ExtractComponent(std::span<const std::uint8_t> package, const OtaComponent& component);

}  // namespace varkel
