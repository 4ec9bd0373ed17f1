#pragma once

#include <span>
#include <string>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// A model whose variables the dissector shows.
struct DissectorModel {
  std::string name;
  const ConfigParser* catalogue = nullptr;  ///< not null; outlives the call
};

/// A Lua file for Wireshark that shows KTC and the small sensors' serial frames. Each variable is a field
/// "ktc.MODEL.NAME", both names in lower case with "_" for what is neither letter nor digit; of variables
/// with the same name all but the first have their identifier behind it ("ktc.quenta.speed_3_12"). Which
/// model a capture belongs to is a preference; the first one is its default.
std::string WiresharkDissector(std::span<const DissectorModel> models);

}  // namespace varkel
