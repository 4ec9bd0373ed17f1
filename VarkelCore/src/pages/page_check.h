#pragma once

#include <functional>
#include <string>

#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"
#include "VarkelCore/src/values/range_check.h"

namespace varkel {

/// Judges values before they are saved, and reports those that don't pass.
class PageCheck {
 public:
  struct Targets {
    UserReport& report;
    /// A variable of a page does not pass; `verdict` says why in a few words ("is out of range").
    std::function<void(const VarInfo& var, const std::string& verdict)> refused;
  };

  explicit PageCheck(Targets targets) : targets_(std::move(targets)) {}

  /// One variable against its range; `key` is what it was looked up by. An unknown one (`var` null) passes.
  bool CheckVarIsWithinRange(const Model& model, const VarInfo* var, const std::string& key) const;

  /// Every variable of the page, each that fails is reported. True when all pass or there is no such page.
  bool CheckModuleVarsWithinRange(const Model& model, int module) const;

 private:
  void Report(const Model& model, const VarInfo& var, const RangeVerdict& verdict) const;

  Targets targets_;
};

}  // namespace varkel
