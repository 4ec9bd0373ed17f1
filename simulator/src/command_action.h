#pragma once

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel::sim {

/// What a command does besides reading and writing variables.
enum class CommandAction {
  kNone,          ///< reads or writes variables
  kAcknowledge,   ///< answered, with any payload; does nothing
  kLog,           ///< answers the log that its row names
  kOperationLog,  ///< answers the part of the operation log that its payload selects
  kUpgrade,       ///< takes a firmware package piece by piece
  kRestart,
  kReset,  ///< all settings back to their defaults, then a restart
};

/// From the rows that name the command as their get command, or as their set command. A command with any row
/// that shows a value is no action.
CommandAction ActionOfReads(const ConfigParser::VarList& vars);
CommandAction ActionOfWrites(const ConfigParser::VarList& vars);

}  // namespace varkel::sim
