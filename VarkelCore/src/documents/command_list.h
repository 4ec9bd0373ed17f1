#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// Where a variable lies in a payload.
struct CommandField {
  const VarInfo* var = nullptr;
  std::uint32_t position = 0;           ///< in bytes; a four-byte code in front of the payload counts
  std::optional<std::uint32_t> length;  ///< in bytes; none: all that there is
};

/// A command as it goes over the wire, with everything that the table says about it. The records belong to
/// the catalogue.
struct WireCommand {
  Command command;
  std::string key;                    ///< see CommandKey
  std::vector<const VarInfo*> vars;   ///< all that name it, those without bytes of their own too
  std::vector<CommandField> read;     ///< of the reply, in the order of their positions
  std::vector<CommandField> written;  ///< of the request
  bool is_upgrade = false;            ///< carries firmware
  bool has_angles = false;            ///< channel's angles follow the variables

  /// "Motor State and 4 more".
  std::string Name() const;
};

/// Two hexadecimal digits, or "ff" and the eight of a four-byte code: no two commands have the same.
std::string CommandKey(const Command& command);

/// The commands of a table by their keys. Texts that differ only in notation ("0x21", "33") are one command;
/// a text that is no number is left out.
std::vector<WireCommand> ListCommands(const ConfigParser& catalogue);

/// The bytes that the fields take, the four-byte code in front included; nullopt when no field or the length
/// of the payload itself tells.
std::optional<std::uint32_t> PayloadSize(const std::vector<CommandField>& fields);

}  // namespace varkel
