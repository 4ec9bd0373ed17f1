#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Tells, once a page has been read back after a save, what the sensor made of it. Used from one thread.
class SaveCheck {
 public:
  struct Outcome {
    int module = 0;
    QString text;          ///< "3 of 4 verified, Spin Rate holds 600 instead of 610"
    bool good = true;      ///< all is as it was sent
    bool differs = false;  ///< the sensor holds something else
  };

  /// A save has ended; a check that was due before is given up.
  void Saved(std::shared_ptr<Model> model, int module, SavedEdits edits);
  /// Pages have been read. The outcome once all that was saved has been reported, or, when no further reading
  /// is under way, in any case; nullopt before, and when no check is due.
  std::optional<Outcome> AfterReading(bool more_to_come);
  /// The connection has ended, so nothing is read back.
  void GiveUp() { model_.reset(); }

 private:
  std::shared_ptr<Model> model_;  ///< null: no check is due
  int module_ = 0;
  SavedEdits edits_;
};

}  // namespace varkel
