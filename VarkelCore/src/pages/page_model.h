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
/// Lives on the user interface's thread. It always shows the current values; the changes taken from the value
/// store are passed to ShowChanges, which reports exactly the affected rows as changed.
class PageModel : public QAbstractListModel {
  Q_OBJECT
  /// The number of rows with an unsaved edit.
  Q_PROPERTY(int edits READ edits NOTIFY editsChanged)
  /// When the sensor last reported one of the rows; invalid if it never did.
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
    kSentText,  ///< the text last saved on this connection
    kVerdict,   ///< why the page check refused the current text; empty if it did not
    kVarId,
    kStale,     ///< read, but not from the currently connected sensor
    kAngles,    ///< ten texts; only for the field of view's row
    kHeldText,  ///< the text that reverting the edit restores
    kRefusal,   ///< why the last save of this edit failed, in a few words; empty if it did not
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
  /// The page check refused the variable's current text. The verdict is shown until the text changes.
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
  std::unordered_map<const VarInfo*, std::vector<int>> rows_of_;  ///< the rows that show a variable
};

}  // namespace varkel
