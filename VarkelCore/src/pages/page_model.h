#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QVariant>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The rows of one page for QML: a heading for each group, then its variables, in the order of `PageRows`.
///
/// Lives on the user interface's thread. It shows the values as they are; whoever takes the changes of the
/// value store hands them over, and exactly the rows that they touch are reported as changed.
class PageModel : public QAbstractListModel {
  Q_OBJECT
  /// The number of rows with an edit that is not saved.
  Q_PROPERTY(int edits READ edits NOTIFY editsChanged)
  /// When the sensor reported one of the rows last; invalid before.
  Q_PROPERTY(QDateTime lastRead READ lastRead NOTIFY lastReadChanged)
  /// Whether one of the rows is a firmware upgrade.
  Q_PROPERTY(bool upgrades READ upgrades CONSTANT)

 public:
  enum Role : int {
    kLabel = Qt::UserRole + 1,  ///< group title, or name and unit
    kKind,  ///< component type; -1 for a heading, for which the roles below `kVariable` are empty
    kGroup,
    kVariable,  ///< index within the group, as the controller's calls take it; -1 for a heading
    kName,
    kText,
    kSwitchText,
    kOrigin,    ///< as in the variable's map
    kReadTime,  ///< as in the variable's map
    kEdited,    ///< the variable, its switch or the field of view's angles
    kLive,      ///< refreshed continuously
    kWritable,
    kRangeMin,
    kRangeMax,
    kUnit,
    kType,  ///< value type
    kOptions,
    kOptionLabels,
    kRawHex,    ///< the field's bytes as the sensor sent them, "01 a0"
    kSentText,  ///< what was saved last on this connection
    kVerdict,   ///< why the page check refused the present text; empty when it did not
    kVarId,
    kStale,     ///< read, but not from the sensor that is connected now
    kAngles,    ///< ten texts; of the field of view's row only
    kHeldText,  ///< what an edited text goes back to
    kRefusal,   ///< why the last save of this edit failed, in a few words; empty when it did not
  };

  PageModel(std::shared_ptr<Model> model, int page, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;
  int edits() const { return edits_; }
  QDateTime lastRead() const;
  bool upgrades() const;

  /// Reports the rows that show one of these variables, or its switch, as changed.
  void ShowChanges(const std::vector<const VarInfo*>& vars);
  /// The page check refused the variable's present text. It holds until the text changes.
  void SetVerdict(const VarInfo& var, const QString& verdict);

 signals:
  void editsChanged();
  void lastReadChanged();

 private:
  struct Row {
    QString label;
    int kind = 0;
    int group = 0;
    int variable = -1;
    const VarInfo* var = nullptr;  ///< null: a heading
    bool edited = false;           ///< counted in edits_
    QString verdict;
    std::string refused_text;
  };

  QVariant Constant(const VarInfo& var, int role) const;
  QVariant Changing(const Row& row, int role) const;
  void Watch(const VarInfo& var, int row);
  void Follow(Row& row);

  const std::shared_ptr<Model> model_;
  std::vector<Row> rows_;
  int edits_ = 0;
  std::optional<ValueStore::Time> last_read_;
  std::unordered_map<const VarInfo*, std::vector<int>> rows_of_;  ///< the rows that a variable changes
};

}  // namespace varkel
