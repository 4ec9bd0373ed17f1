#include "VarkelCore/src/pages/page_check.h"

#include <QString>

#include "VarkelCore/src/tasks/diagnostics.h"

namespace varkel {

namespace {

constexpr char kSingleCheck[] = "VarkelManager::CheckVarIsWithinRange";
constexpr char kPageCheck[] = "VarkelManager::CheckModuleVarsWithinRange";

/// The verdict shown in the log pane and in the row.
const char* Words(RangeFault fault) {
  switch (fault) {
    case RangeFault::kOutOfRange:
      return "is out of range";
    case RangeFault::kIpFormat:
      return "has invalid IP format";
    case RangeFault::kMacFormat:
      return "has invalid MAC format";
    case RangeFault::kNotANumber:
      return "is not a valid number";
    case RangeFault::kNone:
      break;
  }
  return "";
}

void WriteConversionFault(const char* operation, const RangeVerdict& verdict) {
  DebugLine(operation,
            verdict.does_not_fit ? " Out of range: " : " Invalid argument: ", verdict.detail.c_str());
}

}  // namespace

bool PageCheck::CheckVarIsWithinRange(const Model& model, const VarInfo* var, const std::string& key) const {
  if (var == nullptr) {
    DebugLine(kSingleCheck,
              " Can't find this var info for range check. var_info =", QString::fromStdString(key));
    return true;
  }
  const RangeVerdict verdict = JudgeValue(*model.catalogue, *var);
  if (verdict.fault == RangeFault::kNotANumber) WriteConversionFault(kSingleCheck, verdict);
  return verdict.passes();
}

bool PageCheck::CheckModuleVarsWithinRange(const Model& model, int module) const {
  const auto& modules = model.catalogue->module_vars();
  if (module < 0 || static_cast<std::size_t>(module) >= modules.size()) return true;
  bool all_pass = true;
  for (const auto& group : modules[static_cast<std::size_t>(module)]) {
    for (const VarInfo* var : group) {
      const RangeVerdict verdict = JudgePageValue(*model.catalogue, *var);
      if (verdict.passes()) continue;
      all_pass = false;
      Report(model, *var, verdict);
    }
  }
  return all_pass;
}

void PageCheck::Report(const Model& model, const VarInfo& var, const RangeVerdict& verdict) const {
  targets_.report.Log("Detected that the user set " + var.var_name + " " + Words(verdict.fault), "WARNING");
  targets_.refused(var, Words(verdict.fault));
  const QString name = QString::fromStdString(var.var_name);
  if (verdict.fault == RangeFault::kNotANumber) {
    WriteConversionFault(kPageCheck, verdict);
  } else if (verdict.fault == RangeFault::kOutOfRange) {
    DebugLine(kPageCheck, ": detected that", name, "is out of range");
  } else {
    const char* const words =
        verdict.fault == RangeFault::kIpFormat ? "has invalid IP format:" : "has invalid MAC format:";
    DebugLine(kPageCheck, ": detected that", name, words,
              QString::fromStdString(model.catalogue->CurrentValue(var)));
  }
}

}  // namespace varkel
