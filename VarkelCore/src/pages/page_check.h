#pragma once

#include <QString>
#include <functional>
#include <string>

#include "VarkelCore/src/pages/page_models.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"
#include "VarkelCore/src/values/range_check.h"

namespace varkel {

/// Checks values of the selected model before they are saved, and reports those that fail.
class PageCheck {
 public:
  /// Everything in it outlives this object.
  struct Targets {
    const ModelSelection& models;
    PageModels& page_models;  ///< the rows show why their variable failed
    UserReport& report;
    std::function<void(const QString& var_name)> refused;  ///< a variable of a page failed
  };

  explicit PageCheck(Targets targets) : targets_(std::move(targets)) {}

  /// Checks one variable, looked up by searchVarPtr, against its range. An unknown variable passes.
  bool CheckVarIsWithinRange(const std::string& key, const std::string& search_type) const;

  /// Checks every variable of the page and reports those that fail. True if all pass or there is no such
  /// page.
  bool CheckModuleVarsWithinRange(int module) const;

 private:
  void Report(const Model& model, const VarInfo& var, const RangeVerdict& verdict) const;

  Targets targets_;
};

}  // namespace varkel
