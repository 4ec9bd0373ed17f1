#include "VarkelCore/src/documents/lint_text.h"

#include <algorithm>

#include "VarkelCore/src/documents/markup.h"

namespace varkel {
std::string FindingLine(const TableFinding& finding) {
  std::string line = finding.file + ":";
  if (finding.line > 0) line += std::to_string(finding.line) + ":";
  if (!finding.column.empty()) line += " " + finding.column + ":";
  return line + (finding.severity == Severity::kError ? " error: " : " warning: ") + finding.text;
}

std::string FindingCount(std::span<const TableFinding> findings) {
  const auto errors =
      static_cast<std::size_t>(std::ranges::count(findings, Severity::kError, &TableFinding::severity));
  const std::size_t warnings = findings.size() - errors;
  if (findings.empty()) return "no findings";
  if (warnings == 0) return Counted(errors, "error");
  if (errors == 0) return Counted(warnings, "warning");
  return Counted(errors, "error") + " and " + Counted(warnings, "warning");
}

bool HasErrors(std::span<const TableFinding> findings) {
  return std::ranges::count(findings, Severity::kError, &TableFinding::severity) > 0;
}

}  // namespace varkel
