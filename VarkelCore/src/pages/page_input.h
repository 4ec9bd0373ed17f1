#pragma once

#include <functional>
#include <string>

#include "VarkelCore/src/pages/page_models.h"
#include "VarkelCore/src/pages/user_edits.h"
#include "VarkelCore/src/pages/value_editor.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Takes what the user enters on the pages of the selected model as edits that can be undone, and shows at
/// once what is wrong with them. Used from the window's thread.
class PageInput {
 public:
  struct Events {
    std::function<void()> edited;           ///< an edit was made or reverted
    std::function<void()> angles_restored;  ///< the pages must show other angles than those entered
  };

  /// All arguments outlive this object.
  PageInput(const ModelSelection& models, UserEdits& edits, PageModels& page_models, UserReport& report,
            Events events);

  /// Enters a text in the row at [page][group][index]; see ValueEditor.
  void SetText(int type, int page, int group, int index, const std::string& text);
  /// Enters one angle of the field of view, in degrees; see ValueEditor. Other indices are ignored.
  void SetAngle(int index, const std::string& degrees);
  /// Reverts all edits, for good.
  void Cancel();
  /// The connection, of that type, has ended: edits can no longer be undone, and those for a network sensor
  /// are dropped. The caller announces it.
  void Disconnected(int connect_type);

 private:
  void ShowTypingFault(const Model& model, const VarInfo& var, const std::string& text);

  const ModelSelection& models_;
  UserEdits& edits_;
  PageModels& page_models_;
  UserReport& report_;
  const Events events_;
  const ValueEditor editor_;
};

}  // namespace varkel
