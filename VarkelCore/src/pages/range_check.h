#pragma once

#include <QString>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

/// Judges one value against its table row. True when it may be sent: within the range, or the table sets none
/// (a range with a 0 bound is none), or there is no such variable (`var` null; `key` names it in the debug
/// log).
bool IsWithinRange(const ConfigParser& catalogue, const VarInfo* var, const QString& key);

enum class RangeFault { kNone, kOutOfRange, kIpFormat, kMacFormat, kNotANumber };

/// Judges an editable value as a whole page is judged: as the integer, IP or MAC text that it has to be.
/// Variables that the user can't edit, and texts, always pass. kNotANumber comes with a debug line.
RangeFault JudgePageValue(const ConfigParser& catalogue, const VarInfo& var);

}  // namespace varkel
