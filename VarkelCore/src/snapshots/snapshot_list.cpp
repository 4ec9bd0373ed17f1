#include "VarkelCore/src/snapshots/snapshot_list.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <utility>

namespace varkel {

namespace {

QVariant SensorRow(int role) {
  switch (role) {
    case SnapshotList::kTime:
      return QStringLiteral("Now");
    case SnapshotList::kReason:
      return QStringLiteral("The sensor now");
    case SnapshotList::kFile:
      return QString();
    case SnapshotList::kAutomatic:
      return false;
    default:
      return {};
  }
}

}  // namespace

int SnapshotList::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : snapshots() + 1;
}

QVariant SnapshotList::data(const QModelIndex& index, int role) const {
  if (index.row() == 0) return SensorRow(role);
  const SnapshotFolder::Description* const snapshot = At(index.row());
  if (snapshot == nullptr) return {};
  switch (role) {
    case kTime:
      return LocalTime(snapshot->time);
    case kReason:
      if (!snapshot->reason.empty()) return QString::fromStdString(snapshot->reason);
      return snapshot->is_automatic ? QStringLiteral("Before a change") : QStringLiteral("Saved");
    case kFile:
      return QFileInfo(snapshot->path).fileName();
    case kAutomatic:
      return snapshot->is_automatic;
    default:
      return {};
  }
}

QHash<int, QByteArray> SnapshotList::roleNames() const {
  return {{kTime, "time"}, {kReason, "reason"}, {kFile, "file"}, {kAutomatic, "automatic"}};
}

void SnapshotList::Set(std::vector<SnapshotFolder::Description> snapshots) {
  beginResetModel();
  snapshots_ = std::move(snapshots);
  endResetModel();
  emit snapshotsChanged();
}

const SnapshotFolder::Description* SnapshotList::At(int row) const {
  const bool is_snapshot = row > 0 && row <= snapshots();
  return is_snapshot ? &snapshots_[static_cast<std::size_t>(row - 1)] : nullptr;
}

QString SnapshotList::LocalTime(const std::string& time) {
  const QString text = QString::fromStdString(time);
  const QDateTime utc = QDateTime::fromString(text, Qt::ISODateWithMs);
  return utc.isValid() ? QLocale::c().toString(utc.toLocalTime(), QStringLiteral("yyyy-MM-dd HH:mm:ss"))
                       : text;
}

}  // namespace varkel
