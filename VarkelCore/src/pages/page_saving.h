#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/pages/save_check.h"
#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/tasks/background_work.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// Saves pages to the connected sensor, if that is possible now, and checks background saves when the page is
/// read back. Every outcome is reported. Used from the window's thread.
class PageSaving {
 public:
  /// Everything in it outlives this object, and the workers are joined before it is destroyed.
  struct Context {
    const SensorConnection& connection;
    const ModelSelection& models;
    const Activity& activity;
    const PageWriter& writer;
    BackgroundWork& work;
    UserReport& report;
  };
  struct Events {
    std::function<void()> saved;               ///< a save was carried out, successfully or not
    std::function<void(int module)> finished;  ///< a background save has ended, even if refused
    /// A background save's values have been read back, as far as possible.
    std::function<void(const SaveCheck::Outcome&)> read_back;
  };

  PageSaving(Context context, Events events) : context_(context), events_(std::move(events)) {}

  /// Saves a page; blocks. A page that can't be saved now is reported, unless there is no such page.
  void Save(int module) const;
  /// The same on a worker.
  void SaveInBackground(int module);
  /// A page has been read. `more_to_come`: another one is being read.
  void PageRead(bool more_to_come);
  /// The connection has ended: the last save can't be checked.
  void Disconnected() { check_.GiveUp(); }

 private:
  /// A page to save, with its model and the session of the sensor that gets it.
  struct Job {
    std::shared_ptr<Model> model;
    std::shared_ptr<SensorSession> session;
    int module = 0;
  };

  std::optional<Job> Prepare(int module) const;
  bool MayWrite(const std::shared_ptr<SensorSession>& session) const;
  SavedEdits Run(const Job& job) const;

  const Context context_;
  const Events events_;
  SaveCheck check_;
};

}  // namespace varkel
