#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "libquarn/Source/src/ota_transfer.h"

namespace varkel {

/// The firmware package of a Marvo sensor: a header of 56 bytes (numbers little-endian), then the data of up
/// to five components. Offsets count from the header's end. A package is untrusted: nothing here reads
/// beyond it or allocates memory for a size that it claims.

inline constexpr std::size_t kMarvoHeaderSize = 56;

struct OtaComponentRef {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  bool present = false;
};

struct OtaPackageHeader {
  std::uint32_t total_size = 0;  ///< as the package claims; not used
  std::uint8_t flags = 0;
  OtaComponentRef bmb_app_a;
  OtaComponentRef bmb_app_b;
  OtaComponentRef bmb_fpga;
  OtaComponentRef tmb_fpga;
  OtaComponentRef tmb_param;
};

enum class MarvoPackageFault : std::uint8_t { kNone, kTooShort, kWrongMagic };

/// Reads the header; a component is present only if its flag is set, whatever its fields say.
MarvoPackageFault ParseMarvoPackage(std::span<const std::uint8_t> package, OtaPackageHeader& header);

/// A component to be sent to the sensor.
struct OtaComponent {
  std::string name;
  std::uint8_t type = 0;
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  bool present = false;
};

/// The present components in the order in which a sensor that runs from `running` expects them. Only the
/// application for the other partition is included.
std::vector<OtaComponent> ComponentsToSend(const OtaPackageHeader& header, quarn::lidar::Partition running);

struct ExtractedComponent {
  std::span<const std::uint8_t> data;  ///< within the package; empty if the range lies outside it
  bool out_of_range = false;           ///< the 32-bit range test failed
};

/// The component's bytes. FPGA images of more than 1024 bytes have a preamble of 1024 bytes that is not sent.
/// The range test is that of the sensor family, in wrapping 32-bit arithmetic; a range that only passes
/// because it wraps around is empty.
ExtractedComponent ExtractComponent(std::span<const std::uint8_t> package, const OtaComponent& component);

}  // namespace varkel
