#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// The first variable with one of the names, or null. Tables spell names like "Restart" in two ways.
const VarInfo* FindNamed(const ConfigParser& catalogue, std::initializer_list<const char*> names);

/// The command of an action row (restart, a log): its get command, or its set command if it has no get
/// command.
const std::string& ActionCommandText(const VarInfo& var);

/// The command that carries a firmware package: the row's set command. An upgrade row without a set command
/// uses its get command; for any other row without one the text is empty.
std::string UpgradeCommandText(const VarInfo& var);

/// The complete request of an action row; the payload includes any four-byte code.
struct ActionRequest {
  Command command;
  std::vector<std::uint8_t> payload;
};

/// `extra` follows the row's own payload. Raises the conversion errors of text_number.h if the command is not
/// a number.
ActionRequest MakeActionRequest(const VarInfo& var, std::initializer_list<std::uint8_t> extra = {});

}  // namespace varkel
