#pragma once

#include <memory>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Saves pages to the connected sensor, if that is possible now. Thread-safe.
class PageSaving {
 public:
  /// All arguments outlive this object.
  PageSaving(const SensorConnection& connection, const ModelSelection& models, const Activity& activity,
             const PageWriter& writer, UserReport& report)
      : connection_(connection), models_(models), activity_(activity), writer_(writer), report_(report) {}

  /// A page to save, with its model and the session of the sensor that gets it.
  struct Save {
    std::shared_ptr<Model> model;
    std::shared_ptr<SensorSession> session;
    int module = 0;
  };

  /// Prepares a save; nullopt if the page can't be saved now, which is reported unless there is no such page.
  std::optional<Save> Prepare(int module) const;
  /// Saves the page on the calling thread; every outcome is reported. Returns the edits that were sent; empty
  /// unless all were.
  SavedEdits Run(const Save& save) const;

 private:
  bool MayWrite(const std::shared_ptr<SensorSession>& session) const;

  const SensorConnection& connection_;
  const ModelSelection& models_;
  const Activity& activity_;
  const PageWriter& writer_;
  UserReport& report_;
};

}  // namespace varkel
