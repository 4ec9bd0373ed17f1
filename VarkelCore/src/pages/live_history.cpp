#include "VarkelCore/src/pages/live_history.h"

#include <cstdint>

#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/pages/variable_details.h"
#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel {

namespace {

QString Number(double number) {
  return QString::number(number, 'g', 7);
}

/// A cell that spreadsheets always treat as text, never as a formula.
QString Cell(QString text) {
  return '"' + text.replace('"', QStringLiteral("\"\"")) + '"';
}

}  // namespace

void LiveHistory::Follow(const std::shared_ptr<Model>& model, const std::vector<const VarInfo*>& changed) {
  if (model != model_) {
    history_.Clear();
    model_ = model;
  }
  bool added = false;
  for (const VarInfo* var : changed) {
    if (var->timer_update) added |= history_.Add(*var, model->values.Show(*var));
  }
  if (added) emit this->changed();
}

void LiveHistory::Clear() {
  history_.Clear();
  model_.reset();
  emit changed();
}

const VarInfo* LiveHistory::Find(const QString& var_id) const {
  return model_ ? model_->catalogue->FindById(var_id.toStdString()) : nullptr;
}

const ReadingHistory::Points* LiveHistory::Points(const QString& var_id) const {
  const VarInfo* const var = Find(var_id);
  return var == nullptr ? nullptr : history_.Find(*var);
}

QVariantMap LiveHistory::summary(const QString& var_id) const {
  const ReadingHistory::Points* const points = Points(var_id);
  if (points == nullptr) return {};
  const VarInfo& var = *Find(var_id);
  const ReadingHistory::Summary summary = ReadingHistory::Summarize(*points);
  return {{QStringLiteral("name"), QString::fromStdString(var.var_name)},
          {QStringLiteral("unit"), BareUnit(var)},
          {QStringLiteral("min"), Number(summary.min)},
          {QStringLiteral("max"), Number(summary.max)},
          {QStringLiteral("mean"), Number(summary.mean)},
          {QStringLiteral("last"), Number(points->back().value)}};
}

QString LiveHistory::saveCsv(const QUrl& file, const QStringList& var_ids) const {
  QString table = QStringLiteral("time,name,unit,value\n");
  for (const QString& var_id : var_ids) {
    const ReadingHistory::Points* const points = Points(var_id);
    if (points == nullptr) continue;
    const VarInfo& var = *Find(var_id);
    const QString cells = ',' + Cell(QString::fromStdString(var.var_name)) + ',' + Cell(BareUnit(var)) + ',';
    for (const auto& [time, value] : *points) {
      table += IsoTime(time) + cells + QString::number(value, 'g', 12) + '\n';
    }
  }
  const QString path = file.toLocalFile();
  const QByteArray bytes = table.toUtf8();
  const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.constData());
  const bool written =
      IsWritableTarget(path) &&
      WriteAtomically(path, {data, static_cast<std::size_t>(bytes.size())}) == WriteResult::kWritten;
  return written ? QString() : QStringLiteral("The readings can't be written to ") + path + '.';
}

}  // namespace varkel
