#include "VarkelCore/src/pages/page_check.h"

#include "VarkelCore/src/catalogue/variable_search.h"
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

bool PageCheck::CheckVarIsWithinRange(const std::string& key, const std::string& search_type) const {
  const auto model = targets_.models.model();
  if (!model) return true;
  const VarInfo* const var = searchVarPtr(*model->catalogue, key, search_type);
  if (var == nullptr) {
    DebugLine(kSingleCheck,
              " Can't find this var info for range check. var_info =", QString::fromStdString(key));
    return true;
  }
  const RangeVerdict verdict = JudgeValue(*model->catalogue, *var);
  if (verdict.fault == RangeFault::kNotANumber) WriteConversionFault(kSingleCheck, verdict);
  return verdict.passes();
}

bool PageCheck::CheckModuleVarsWithinRange(int module) const {
  const auto model = targets_.models.model();
  if (!model) return true;
  const auto& modules = model->catalogue->module_vars();
  if (module < 0 || static_cast<std::size_t>(module) >= modules.size()) return true;
  bool all_pass = true;
  for (const auto& group : modules[static_cast<std::size_t>(module)]) {
    for (const VarInfo* var : group) {
      const RangeVerdict verdict = JudgePageValue(*model->catalogue, *var);
      if (verdict.passes()) continue;
      all_pass = false;
      Report(*model, *var, verdict);
    }
  }
  return all_pass;
}

void PageCheck::Report(const Model& model, const VarInfo& var, const RangeVerdict& verdict) const {
  targets_.report.Log("Detected that the user set " + var.var_name + " " + Words(verdict.fault), "WARNING");
  const QString name = QString::fromStdString(var.var_name);
  targets_.refused(name);
  targets_.page_models.Refuse(var, Words(verdict.fault));
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
