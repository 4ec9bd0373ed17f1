#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <utility>

#include "VarkelCore/src/pages/edit_history.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The unsaved edits of all pages of the selected model, for QML. Lives on the user interface's thread; the
/// code that changes edits emits `changed`.
class UserEdits : public QObject {
  Q_OBJECT
  /// One map per edit: "key", "page" (its index), "label", "from" and "to" (the texts as a row shows them).
  Q_PROPERTY(QVariantList all READ all NOTIFY changed)
  /// The number of edited rows of each page.
  Q_PROPERTY(QVariantList counts READ counts NOTIFY changed)

 public:
  using ModelSource = std::function<std::shared_ptr<Model>()>;

  /// `model` gives the selected model, or null; `edited` is called after each change made here.
  UserEdits(ModelSource model, std::function<void()> edited)
      : model_(std::move(model)), edited_(std::move(edited)) {}

  QVariantList all() const;
  QVariantList counts() const;

  /// Makes an edit that can be undone.
  void Do(const std::shared_ptr<Model>& model, std::initializer_list<EditHistory::Target> targets,
          const std::function<void()>& change) {
    history_.Do(model, targets, change);
  }
  /// Clears the undo history.
  void Forget() { history_.Clear(); }

  /// Reverts the edit with this "key"; this can be undone as well.
  Q_INVOKABLE void takeBack(const QString& key);
  /// Undoes or redoes one edit. Returns the page that shows it; -1 if there is none.
  Q_INVOKABLE int undo();
  Q_INVOKABLE int redo();
  /// Whether saving the page would send anything.
  Q_INVOKABLE bool hasCommands(int page) const;
  /// A sentence for each edit of the page that can't be sent.
  Q_INVOKABLE QStringList faults(int page) const;
  /// A line for each value of the page that is out of range, with the range.
  Q_INVOKABLE QStringList outOfRange(int page) const;

 signals:
  void changed();
  /// An edit was undone or redone: the page that shows it, and the row in the page's list.
  void stepped(int page, int row);

 private:
  int Announce(const std::optional<EditHistory::Target>& target);

  const ModelSource model_;
  const std::function<void()> edited_;
  EditHistory history_;
};

}  // namespace varkel
