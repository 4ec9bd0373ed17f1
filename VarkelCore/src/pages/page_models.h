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

/// The page models of the selected model, made when they are asked for, and its history. All but
/// ValuesChanged and Refuse belong to the user interface's thread.
class PageModels {
 public:
  /// `owner` becomes the parent of every page model, which keeps QML from deleting them. Everything outlives
  /// this object.
  PageModels(QObject& owner, const ModelSelection& models, EventQueue& events)
      : owner_(owner), models_(models), events_(events) {}

  /// The page's rows; null when there is no such page.
  PageModel* Get(int module);
  /// Another model is selected: the page models go once the events that may use them have run.
  void Drop();

  /// What live variables were since the model was selected.
  LiveHistory& history() { return history_; }

  /// Shows what events of the values touched. From any thread; at once on the user interface's.
  void ValuesChanged();
  /// Shows at its row why the page check refused the variable. From any thread.
  void Refuse(const VarInfo& var, const std::string& verdict);

 private:
  QObject& owner_;
  const ModelSelection& models_;
  EventQueue& events_;
  std::map<int, PageModel*> pages_;
  LiveHistory history_;
};

}  // namespace varkel
