#pragma once

#include <functional>
#include <string>

#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"
#include "VarkelCore/src/values/range_check.h"

namespace varkel {

/// Checks values before they are saved, and reports those that fail.
class PageCheck {
 public:
  struct Targets {
    UserReport& report;
    /// A variable of a page failed the check; `verdict` says why in a few words ("is out of range").
    std::function<void(const VarInfo& var, const std::string& verdict)> refused;
  };

  explicit PageCheck(Targets targets) : targets_(std::move(targets)) {}

  /// Checks one variable against its range; `key` is the text that it was looked up by. An unknown variable
  /// (`var` null) passes.
  bool CheckVarIsWithinRange(const Model& model, const VarInfo* var, const std::string& key) const;

  /// Checks every variable of the page and reports those that fail. True if all pass or there is no such
  /// page.
  bool CheckModuleVarsWithinRange(const Model& model, int module) const;

 private:
  void Report(const Model& model, const VarInfo& var, const RangeVerdict& verdict) const;

  Targets targets_;
};

}  // namespace varkel
