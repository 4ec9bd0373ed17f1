#pragma once

#include <string>

#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Records the user's edits: the new text becomes the variable's value and its set command is pending until
/// the page is saved. Nothing is sent.
class ValueEditor {
 public:
  /// How to interpret the text of an edit.
  enum EditType : int {
    kValue = 1,        ///< the new value itself
    kSwitchValue = 2,  ///< the new value of the variable's switch
    kOptionIndex = 3,  ///< the decimal index of one of the variable's options
  };

  explicit ValueEditor(UserReport& report) : report_(report) {}

  /// Edits the variable at [page][group][index]; places that don't exist are ignored. Raises the conversion
  /// errors of text_number.h if an option index is not a number.
  void SetText(Model& model, int type, int page, int group, int index, const std::string& text) const;

  /// Stores one angle of the field of view (index 0 to 4: starts, 5 to 9: ends) and marks its set command as
  /// pending. False, with nothing stored, if the text is not a number from 0 to 360.
  bool SetFov(Model& model, int index, const std::string& degrees) const;

 private:
  UserReport& report_;
};

}  // namespace varkel
