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
  std::uint32_t position = 0;           ///< in bytes, including any four-byte code at the front
  std::optional<std::uint32_t> length;  ///< in bytes; nullopt: the rest of the payload
};

/// A command on the wire, with everything that the table says about it. The catalogue owns the records.
struct WireCommand {
  Command command;
  std::string key;                    ///< see CommandKey
  std::vector<const VarInfo*> vars;   ///< all that name it, including those without bytes of their own
  std::vector<CommandField> read;     ///< fields of the reply, by position
  std::vector<CommandField> written;  ///< fields of the request, by position
  bool is_upgrade = false;            ///< carries firmware
  bool has_angles = false;            ///< the channel's angles follow the variables

  /// "Motor State and 4 more".
  std::string Name() const;
};

/// Two hexadecimal digits, or "ff" and the eight digits of a four-byte code; unique for each command.
std::string CommandKey(const Command& command);

/// The commands of a table, ordered by key. Texts that differ only in notation ("0x21", "33") are one
/// command; texts that are not numbers are left out.
std::vector<WireCommand> ListCommands(const ConfigParser& catalogue);

/// The payload size given by its fields, in bytes, including any four-byte code; nullopt if there are no
/// fields or one of them takes the rest of the payload.
std::optional<std::uint32_t> PayloadSize(const std::vector<CommandField>& fields);

}  // namespace varkel
