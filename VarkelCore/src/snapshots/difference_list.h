#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVariant>
#include <string>
#include <unordered_set>
#include <vector>

#include "VarkelCore/src/state/plan_run.h"
#include "VarkelCore/src/state/state_compare.h"

namespace varkel {

/// A difference as the window shows it.
struct DifferenceRow {
  std::string id;   ///< in the left state
  std::string key;  ///< the settable variable of the left value (SettableKey); empty if it can't be set
  QString page;
  QString name;
  QString left;
  QString right;
  bool edited = false;    ///< has an unsaved edit
  bool selected = false;  ///< always false if it can't be set or is edited
  QString outcome;        ///< the result of applying it; empty before
  bool is_good = false;   ///< the outcome is what the user wanted
};

/// The rows of a comparison. Page and unit are taken from the left state, or from the right one if only that
/// has the variable.
std::vector<DifferenceRow> MakeRows(const ConfigParser& catalogue, const SensorState& left,
                                    const SensorState& right, const Comparison& comparison);

/// The differences of two states, for QML. Lives on the user interface's thread.
class DifferenceList : public QAbstractListModel {
  Q_OBJECT
  Q_PROPERTY(int total READ total NOTIFY changed)        ///< all rows, including those not shown
  Q_PROPERTY(int selected READ selected NOTIFY changed)  ///< rows to be applied
  Q_PROPERTY(int selectable READ selectable NOTIFY changed)
  Q_PROPERTY(bool onlySettable READ onlySettable WRITE setOnlySettable NOTIFY changed)

 public:
  enum Role : int {
    kPage = Qt::UserRole + 1,
    kName,
    kLeft,
    kRight,
    kSettable,
    kEdited,
    kSelected,
    kOutcome,
    kGood,
  };

  using QAbstractListModel::QAbstractListModel;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  int total() const { return static_cast<int>(rows_.size()); }
  int selected() const;
  int selectable() const;
  bool onlySettable() const { return only_settable_; }
  void setOnlySettable(bool only);

  /// Has no effect on rows that can't be selected.
  Q_INVOKABLE void select(int row, bool on);
  /// All selectable rows, whether shown or not.
  Q_INVOKABLE void selectAll(bool on);

  void Set(std::vector<DifferenceRow> rows);
  /// Updates which rows have unsaved edits; these become deselected.
  void SetEdited(const std::unordered_set<std::string>& keys);
  /// Identifiers of the selected rows in the left state.
  std::unordered_set<std::string> SelectedIds() const;
  void ShowOutcomes(const std::vector<ChangeOutcome>& changes);

 signals:
  void changed();

 private:
  static bool IsSelectable(const DifferenceRow& row) { return !row.key.empty() && !row.edited; }
  void Filter();
  void RowsChanged();

  std::vector<DifferenceRow> rows_;
  std::vector<std::size_t> shown_;  ///< indices of rows_
  bool only_settable_ = false;
};

}  // namespace varkel
