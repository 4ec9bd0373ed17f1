#pragma once

#include <QAbstractListModel>
#include <QString>
#include <optional>
#include <vector>

#include "VarkelCore/src/pages/variable_finder.h"

namespace varkel {

/// The results of a search through the selected model, for QML. Lives on the user interface's thread.
class SearchModel : public QAbstractListModel {
  Q_OBJECT
  /// The search text; setting it runs the search.
  Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
  Q_PROPERTY(int count READ count NOTIFY queryChanged)

 public:
  enum Role : int {
    kLabel = Qt::UserRole + 1,  ///< name and unit
    kPlace,                     ///< titles of page and group
    kText,                      ///< the value as the page shows it: an option's label
    kCommands,                  ///< "0x07", "0x07, set 0x08"
    kPage,                      ///< index of the page
    kRow,                       ///< index in the page's list of rows
  };
  /// More rows than anyone reads; a longer query finds fewer.
  static constexpr std::size_t kMaxRows = 100;

  explicit SearchModel(const ModelSelection& models, QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  QString query() const { return query_; }
  void setQuery(const QString& query);
  int count() const { return rowCount(); }

 signals:
  void queryChanged();

 private:
  const ModelSelection& models_;
  std::optional<VariableFinder> finder_;  ///< for the model searched last
  QString query_;
  std::vector<FoundRow> found_;
};

}  // namespace varkel
