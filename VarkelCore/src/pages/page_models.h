#pragma once

#include <QObject>
#include <map>
#include <memory>
#include <string>

#include "VarkelCore/src/pages/live_history.h"
#include "VarkelCore/src/pages/page_model.h"
#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The page models of the selected model, created on demand, and its history. Used from the user interface's
/// thread, except ValuesChanged and Refuse.
class PageModels {
 public:
  /// `owner` becomes the parent of every page model, which keeps QML from deleting them. Listens to the
  /// values of `models`. All arguments outlive this object.
  PageModels(QObject& owner, ModelSelection& models, EventQueue& events);

  /// The page's rows; null if there is no such page.
  PageModel* Get(int module);
  /// Another model has been selected: deletes the page models once pending events that may use them have run.
  void Drop();

  /// The readings of live variables since the model was selected.
  LiveHistory& history() { return history_; }

  /// Shows the values that events have changed. Callable from any thread; takes effect at once on the user
  /// interface's.
  void ValuesChanged();
  /// Shows next to the variable why the page check refused it. Callable from any thread.
  void Refuse(const VarInfo& var, const std::string& verdict);

 private:
  QObject& owner_;
  const ModelSelection& models_;
  EventQueue& events_;
  std::map<int, PageModel*> pages_;
  LiveHistory history_;
};

}  // namespace varkel
