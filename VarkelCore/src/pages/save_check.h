#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Compares what a save sent with what the sensor reports when the page is read back. Used from one thread.
class SaveCheck {
 public:
  struct Outcome {
    int module = 0;
    QString text;          ///< "3 of 4 verified, Spin Rate holds 600 instead of 610"
    bool good = true;      ///< every value was read back as sent
    bool differs = false;  ///< the sensor holds other values
  };

  /// A save has ended; a check that is still due is dropped.
  void Saved(std::shared_ptr<Model> model, int module, SavedEdits edits);
  /// Pages have been read. Returns the outcome once the sensor has reported everything that was saved, or as
  /// soon as no further reading is under way; nullopt until then, and if no check is due.
  std::optional<Outcome> AfterReading(bool more_to_come);
  /// The connection has ended, so nothing is read back.
  void GiveUp() { model_.reset(); }

 private:
  std::shared_ptr<Model> model_;  ///< null: no check is due
  int module_ = 0;
  SavedEdits edits_;
};

}  // namespace varkel
