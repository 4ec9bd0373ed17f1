#pragma once

#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace varkel {

/// A sensor to work with: where it is and what it is.
struct SensorTarget {
  std::string host = "192.168.1.201";
  std::uint16_t port = 9347;
  std::string model = "Quenta";
  std::string label;                   ///< what the user calls it; may be empty
  std::string rs485 = "/dev/ttyUSB0";  ///< the two lines of a sensor without network
  std::string uart = "/dev/ttyUSB1";

  /// The label, or host and port, or the line.
  std::string name() const;
};

/// Reads "ADDRESS" or "ADDRESS:PORT" over `usual`. The error is a sentence.
tl::expected<SensorTarget, std::string> ParseTarget(const std::string& text, SensorTarget usual);

/// Reads a table with a header row and the columns host, port, model and label, of which only host must be
/// there; an empty cell leaves what is usual. The error is a sentence that names file and line.
tl::expected<std::vector<SensorTarget>, std::string> LoadTargets(const std::string& path,
                                                                 const SensorTarget& usual);

}  // namespace varkel
