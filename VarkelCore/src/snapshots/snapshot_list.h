#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVariant>
#include <vector>

#include "VarkelCore/src/state/snapshot_folder.h"

namespace varkel {

/// The snapshots of the connected sensor for QML, newest first, after a row for the sensor itself. Lives on
/// the user interface's thread.
class SnapshotList : public QAbstractListModel {
  Q_OBJECT
  /// The number of snapshots.
  Q_PROPERTY(int snapshots READ snapshots NOTIFY snapshotsChanged)

 public:
  enum Role : int {
    kTime = Qt::UserRole + 1,  ///< in local time
    kReason,
    kFile,
    kAutomatic,
  };

  using QAbstractListModel::QAbstractListModel;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  int snapshots() const { return static_cast<int>(snapshots_.size()); }
  void Set(std::vector<SnapshotFolder::Description> snapshots);
  /// Null for the sensor's row and beyond the end.
  const SnapshotFolder::Description* At(int row) const;
  /// "2026-11-22 03:57:53" in local time.
  static QString LocalTime(const std::string& time);

 signals:
  void snapshotsChanged();

 private:
  std::vector<SnapshotFolder::Description> snapshots_;
};

}  // namespace varkel
