#pragma once

#include <span>
#include <string>

#include "VarkelCore/src/catalogue/table_lint.h"

namespace varkel {

/// "Quenta.csv:12: VarLen: error: ...": one line in the format of compilers, so that editors can jump to it.
std::string FindingLine(const TableFinding& finding);

/// "3 errors and 1 warning", "1 warning", "no findings".
std::string FindingCount(std::span<const TableFinding> findings);

/// Whether any of them is an error.
bool HasErrors(std::span<const TableFinding> findings);

}  // namespace varkel
