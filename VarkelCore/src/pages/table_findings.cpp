#include "VarkelCore/src/pages/table_findings.h"

#include <QFileInfo>
#include <stop_token>
#include <utility>

#include "VarkelCore/src/documents/lint_text.h"

namespace varkel {

void TableFindings::Check(const LoadReport& loaded) {
  ReportLater(loaded);
  Show({});
  // The working directory may have changed by the time the worker runs.
  const QString file = QFileInfo(QString::fromStdString(loaded.path)).absoluteFilePath();
  workers_.Start([this, loaded, file, check = ++checks_](const std::stop_token&) {
    const Found found = Lint(file);
    events_.Post([this, loaded, found, check] {
      if (check != checks_) return;
      Show(found);
      if (!loaded.fault.empty()) return;  // no field is ever sent
      for (const std::string& text : found.misplaced) {
        report_.Log(loaded.table + " puts fields at wrong places: " + text, "WARNING");
      }
    });
  });
}

/// At start-up the table is loaded before the window that shows the reports.
void TableFindings::ReportLater(const LoadReport& loaded) {
  events_.PostLater([this, loaded] {
    if (!loaded.fault.empty()) report_.Error(loaded.fault);
    for (const std::string& error : loaded.errors) report_.Log(error, "ERROR");
    for (const std::string& warning : loaded.warnings) report_.Log(warning, "WARNING");
  });
}

TableFindings::Found TableFindings::Lint(const QString& path) {
  const std::vector<TableFinding> findings = LintTable(path.toStdString());
  if (findings.empty()) return {};
  const QString name = QFileInfo(path).fileName();
  Found found{QString::fromStdString(FindingCount(findings)) + QStringLiteral(" in ") + name, {}, {}};
  for (TableFinding finding : findings) {
    finding.file = name.toStdString();
    found.lines.append(QString::fromStdString(FindingLine(finding)));
    if (finding.misplaces_written_field) found.misplaced.push_back(finding.text);
  }
  return found;
}

void TableFindings::Show(Found found) {
  if (found.lines == found_.lines) return;
  found_ = std::move(found);
  emit changed();
}

}  // namespace varkel
