#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/table_lint.h"

namespace varkel {

/// A variable's row, as it is in the table.
struct LintRow {
  std::size_t line = 0;
  std::map<std::string, std::string> cells;  ///< by column name

  const std::string& operator[](const char* column) const { return cells.at(column); }
  std::string Id() const { return cells.at("GroupID") + "-" + cells.at("Index"); }
  std::string Name() const { return "\"" + cells.at("VarName") + "\" (" + Id() + ")"; }
};

/// Collects the findings of one table.
class LintReport {
 public:
  explicit LintReport(std::string file) : file_(std::move(file)) {}

  void Error(std::size_t line, const std::string& column, const std::string& text) {
    findings_.push_back({file_, line, column, Severity::kError, text});
  }
  void Warning(std::size_t line, const std::string& column, const std::string& text) {
    findings_.push_back({file_, line, column, Severity::kWarning, text});
  }
  void Misplaced(std::size_t line, const std::string& column, const std::string& text) {
    findings_.push_back({file_, line, column, Severity::kError, text, true});
  }
  std::vector<TableFinding> Take() { return std::move(findings_); }

 private:
  const std::string file_;
  std::vector<TableFinding> findings_;
};

/// The number of groups of each page, as defined by the rows so far.
using PageGroups = std::vector<std::size_t>;

/// Reports the faults that can be found in the row by itself.
void LintCells(const LintRow& row, const PageGroups& pages, LintReport& report);

}  // namespace varkel
