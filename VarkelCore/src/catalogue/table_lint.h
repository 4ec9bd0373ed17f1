#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace varkel {

enum class Severity {
  kWarning,  ///< the table works, but probably not as its author meant it
  kError,    ///< the table does not load, or a variable is not shown, read or written correctly
};

/// One fault of a model table.
struct TableFinding {
  std::string file;
  std::size_t line = 0;  ///< line of the file, from 1, where the row begins; 0: the whole file
  std::string column;    ///< empty: the whole row
  Severity severity = Severity::kError;
  std::string text;  ///< a sentence: what is wrong, and what to do
  /// Whether a save writes a field of a set command at the wrong position.
  bool misplaces_written_field = false;
};

/// Every fault of a model table, ordered by line. Empty for a sound table. Never throws: a file that can't be
/// read is a finding as well.
std::vector<TableFinding> LintTable(const std::string& path);

}  // namespace varkel
