#pragma once

#include <string>

#include "VarkelCore/src/catalogue/config_parser.h"

namespace varkel {

enum class RangeFault { kNone, kOutOfRange, kIpFormat, kMacFormat, kNotANumber };

/// How a value relates to the limits of its table row.
struct RangeVerdict {
  RangeFault fault = RangeFault::kNone;
  bool does_not_fit = false;  ///< kNotANumber: a number, but beyond the limits of its type
  std::string detail;         ///< kNotANumber: the text of the exception from text_number.h

  bool passes() const { return fault == RangeFault::kNone; }
};

/// Checks one value against its range. A range with a bound of 0 counts as no range; texts have no range.
RangeVerdict JudgeValue(const ConfigParser& catalogue, const VarInfo& var);

/// Checks an editable value as part of a whole page: as the integer, IP or MAC text that it has to be.
/// Variables that the user can't edit, and texts, always pass.
RangeVerdict JudgePageValue(const ConfigParser& catalogue, const VarInfo& var);

}  // namespace varkel
