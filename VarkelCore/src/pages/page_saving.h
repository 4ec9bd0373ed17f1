#pragma once

#include <memory>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Saves pages to the connected sensor, when that may be done now. Thread-safe.
class PageSaving {
 public:
  /// Everything outlives this object.
  PageSaving(const SensorConnection& connection, const ModelSelection& models, const Activity& activity,
             const PageWriter& writer, UserReport& report)
      : connection_(connection), models_(models), activity_(activity), writer_(writer), report_(report) {}

  /// A page, with the model and the session that it is saved to.
  struct Save {
    std::shared_ptr<Model> model;
    std::shared_ptr<SensorSession> session;
    int module = 0;
  };

  /// What saving the page takes; nullopt when it can't be saved now. Refusals are reported, but not that
  /// there is no such page.
  std::optional<Save> Prepare(int module) const;
  /// Saves it on the calling thread; every outcome is reported. What went out if all did.
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
