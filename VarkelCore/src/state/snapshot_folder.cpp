#include "VarkelCore/src/state/snapshot_folder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <QStandardPaths>
#include <algorithm>

#include "VarkelCore/src/state/state_file.h"
#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel {

namespace {

/// Whether the file is an automatic snapshot; other files in the folder are the user's.
bool IsSnapshotName(const QString& name) {
  static const QRegularExpression pattern(QStringLiteral("^\\d{8}T\\d{6}\\.\\d{3}\\.json$"));
  return pattern.match(name).hasMatch();
}

}  // namespace

SnapshotFolder::SnapshotFolder()
    : SnapshotFolder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                     QStringLiteral("/VelmoraDataFiles/Snapshots")) {}

QString SnapshotFolder::FolderOf(const std::string& sn) const {
  const QString name = SanitizedFileName(QString::fromStdString(sn));
  return root_ + QLatin1Char('/') + (name.isEmpty() ? QStringLiteral("unknown") : name);
}

tl::expected<SnapshotFolder::Entry, std::string> SnapshotFolder::Save(const SensorState& state) const {
  const QString folder = FolderOf(state.sn);
  if (!QDir().mkpath(folder)) {
    return tl::unexpected("The folder " + folder.toStdString() + " can't be created.");
  }
  QDateTime time = QDateTime::currentDateTimeUtc();
  Entry entry;
  do {
    entry.id = QLocale::c().toString(time, QStringLiteral("yyyyMMdd'T'HHmmss.zzz"));
    entry.path = folder + QLatin1Char('/') + entry.id + QStringLiteral(".json");
    time = time.addMSecs(1);
  } while (QFileInfo::exists(entry.path));
  if (std::string fault = SaveState(state, entry.path); !fault.empty()) {
    return tl::unexpected(std::move(fault));
  }
  const std::vector<Entry> all = List(state.sn);
  for (std::size_t i = kMaxKept; i < all.size(); ++i) QFile::remove(all[i].path);
  return entry;
}

std::vector<SnapshotFolder::Entry> SnapshotFolder::List(const std::string& sn) const {
  std::vector<Entry> entries;
  const QDir folder(FolderOf(sn));
  for (const QString& name : folder.entryList(QDir::Files, QDir::Name | QDir::Reversed)) {
    if (!IsSnapshotName(name)) continue;
    entries.push_back({name.chopped(static_cast<int>(qstrlen(".json"))), folder.filePath(name)});
  }
  return entries;
}

std::vector<SnapshotFolder::Description> SnapshotFolder::Describe(const std::string& sn) const {
  std::vector<Description> all;
  const QDir folder(FolderOf(sn));
  for (const QString& name : folder.entryList({QStringLiteral("*.json")}, QDir::Files)) {
    const auto state = LoadState(folder.filePath(name));
    if (state) all.push_back({folder.filePath(name), state->time, state->reason, IsSnapshotName(name)});
  }
  std::sort(all.begin(), all.end(),
            [](const Description& a, const Description& b) { return a.time > b.time; });
  return all;
}

std::optional<SnapshotFolder::Entry> SnapshotFolder::Find(const std::string& sn, const QString& id) const {
  for (const Entry& entry : List(sn)) {
    if (id.isEmpty() || entry.id == id) return entry;
  }
  return std::nullopt;
}

}  // namespace varkel
