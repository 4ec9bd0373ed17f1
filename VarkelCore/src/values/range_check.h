#pragma once

#include <string>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

enum class RangeFault { kNone, kOutOfRange, kIpFormat, kMacFormat, kNotANumber };

/// How a value relates to the limits of its table row.
struct RangeVerdict {
  RangeFault fault = RangeFault::kNone;
  bool does_not_fit = false;  ///< kNotANumber: a number, but beyond its type
  std::string detail;         ///< kNotANumber: the words of text_number.h

  bool passes() const { return fault == RangeFault::kNone; }
};

/// Judges one value against its range. A range with a 0 bound is none; a text has none.
RangeVerdict JudgeValue(const ConfigParser& catalogue, const VarInfo& var);

/// Judges an editable value as a whole page is judged: as the integer, IP or MAC text that it has to be.
/// Variables that the user can't edit, and texts, always pass.
RangeVerdict JudgePageValue(const ConfigParser& catalogue, const VarInfo& var);

}  // namespace varkel
