#include "VarkelCore/src/pages/table_findings.h"

#include <QFileInfo>
#include <stop_token>
#include <utility>

#include "VarkelCore/src/documents/lint_text.h"

namespace varkel {

void TableFindings::Check(const std::string& path) {
  Show({});
  // The working directory may have changed by the time the worker runs.
  const QString file = QFileInfo(QString::fromStdString(path)).absoluteFilePath();
  workers_.Start([this, file, check = ++checks_](const std::stop_token&) {
    const Found found = Lint(file);
    events_.Post([this, found, check] {
      if (check == checks_) Show(found);
    });
  });
}

TableFindings::Found TableFindings::Lint(const QString& path) {
  const std::vector<TableFinding> findings = LintTable(path.toStdString());
  if (findings.empty()) return {};
  const QString name = QFileInfo(path).fileName();
  Found found{QString::fromStdString(FindingCount(findings)) + QStringLiteral(" in ") + name, {}};
  for (TableFinding finding : findings) {
    finding.file = name.toStdString();
    found.lines.append(QString::fromStdString(FindingLine(finding)));
  }
  return found;
}

void TableFindings::Show(Found found) {
  if (found.lines == found_.lines) return;
  found_ = std::move(found);
  emit changed();
}

}  // namespace varkel
