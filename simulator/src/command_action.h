#pragma once

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel::sim {

/// What a command does besides reading and writing variables.
enum class CommandAction {
  kNone,          ///< reads or writes variables
  kAcknowledge,   ///< answered, with any payload; does nothing
  kLog,           ///< answers with the log that its row names
  kOperationLog,  ///< answers with the part of the operation log that its payload selects
  kUpgrade,       ///< receives a firmware package piece by piece
  kRestart,
  kReset,  ///< restores all defaults, then restarts
};

/// Determined from the rows that name the command as their get or set command. A command with any row that
/// shows a value is not an action.
CommandAction ActionOfReads(const ConfigParser::VarList& vars);
CommandAction ActionOfWrites(const ConfigParser::VarList& vars);

}  // namespace varkel::sim
