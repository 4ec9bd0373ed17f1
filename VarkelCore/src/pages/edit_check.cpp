#include "VarkelCore/src/pages/edit_check.h"

#include <functional>
#include <string>
#include <utility>

#include "VarkelCore/src/values/range_check.h"
#include "VarkelCore/src/values/whole_number.h"

namespace varkel {

namespace {

bool HasRange(const VarInfo& var) {
  return var.range_min != 0 && var.range_max != 0;
}

QString Limits(const VarInfo& var) {
  return QStringLiteral("%1 to %2%3")
      .arg(var.range_min)
      .arg(var.range_max)
      .arg(QString::fromStdString(var.unit));
}

QString Allowed(const VarInfo& var, const RangeVerdict& verdict) {
  switch (verdict.fault) {
    case RangeFault::kIpFormat:
      return QStringLiteral("it has to be an address like 192.168.1.201");
    case RangeFault::kMacFormat:
      return QStringLiteral("it has to be six bytes separated by \":\"");
    case RangeFault::kNotANumber:
      return QStringLiteral("it has to be a number");
    default:
      if (var.var_type == "raw") return QStringLiteral("at most %1 characters").arg(var.var_len);
      return QStringLiteral("allowed %1").arg(Limits(var));
  }
}

void EachVariable(const Model& model, int page, const std::function<void(const VarInfo&)>& visit) {
  const auto& modules = model.catalogue->module_vars();
  if (page < 0 || !std::cmp_less(page, modules.size())) return;
  for (const auto& group : modules[static_cast<std::size_t>(page)]) {
    for (const VarInfo* var : group) visit(*var);
  }
}

}  // namespace

QString TypingFault(const VarInfo& var, const std::string& text) {
  if (!IsNumberType(var.var_type) || WholeNumber(Trimmed(text))) return {};
  return QStringLiteral("is not a number");
}

QStringList TypingFaults(const Model& model, int page) {
  QStringList sentences;
  EachVariable(model, page, [&](const VarInfo& var) {
    if (!model.values.IsEdited(var)) return;
    const std::string text = model.catalogue->CurrentValue(var);
    if (TypingFault(var, text).isEmpty()) return;
    sentences.append(QStringLiteral("%1 can't be \"%2\". It has to be a number%3.")
                         .arg(QString::fromStdString(var.var_name), QString::fromStdString(text),
                              HasRange(var) ? QStringLiteral(" from ") + Limits(var) : QString()));
  });
  return sentences;
}

QStringList RangeFaults(const Model& model, int page) {
  QStringList lines;
  EachVariable(model, page, [&](const VarInfo& var) {
    const RangeVerdict verdict = JudgePageValue(*model.catalogue, var);
    if (verdict.passes()) return;
    lines.append(QStringLiteral("%1: %2, %3")
                     .arg(QString::fromStdString(var.var_name),
                          QString::fromStdString(model.catalogue->CurrentValue(var)), Allowed(var, verdict)));
  });
  return lines;
}

}  // namespace varkel
