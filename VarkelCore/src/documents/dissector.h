#pragma once

#include <span>
#include <string>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// A model whose variables the dissector decodes.
struct DissectorModel {
  std::string name;
  const ConfigParser* catalogue = nullptr;  ///< not null; outlives the call
};

/// A Lua file for Wireshark that shows KTC and the small sensors' serial frames. Each variable is a field
/// "ktc.MODEL.NAME", both names in lower case with "_" in place of anything but letters and digits; if
/// several variables share a name, all but the first have their identifier appended
/// ("ktc.quenta.speed_3_12"). The model of a capture is a preference; its default is the first model.
std::string WiresharkDissector(std::span<const DissectorModel> models);

}  // namespace varkel
