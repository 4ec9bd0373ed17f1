#pragma once

#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace varkel {

/// A sensor to work with: its address and its model.
struct SensorTarget {
  std::string host = "192.168.1.201";
  std::uint16_t port = 9347;
  std::string model = "Quenta";
  std::string label;                   ///< the user's name for it; may be empty
  std::string rs485 = "/dev/ttyUSB0";  ///< the two serial lines of a sensor without a network
  std::string uart = "/dev/ttyUSB1";

  /// The label, otherwise host and port, or the serial line.
  std::string name() const;
};

/// Parses "ADDRESS" or "ADDRESS:PORT"; everything else comes from `usual`. The error is a sentence.
tl::expected<SensorTarget, std::string> ParseTarget(const std::string& text, SensorTarget usual);

/// Reads a table with a header row and the columns host, port, model and label, of which only host is
/// mandatory; empty cells take their values from `usual`. The error is a sentence with file and line.
tl::expected<std::vector<SensorTarget>, std::string> LoadTargets(const std::string& path,
                                                                 const SensorTarget& usual);

}  // namespace varkel
