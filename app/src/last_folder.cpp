#include "app/src/last_folder.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <utility>

namespace {

constexpr char kKey[] = "last_folder";

QString OwnFile() {
  return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + "/window.ini";
}

}  // namespace

LastFolder::LastFolder(QString path, QObject* parent)
    : QObject(parent), path_(path.isEmpty() ? OwnFile() : std::move(path)) {}

// Read each time, because another window of the tool may have stored a different folder.
QUrl LastFolder::folder() const {
  const QString kept = QSettings(path_, QSettings::IniFormat).value(kKey).toString();
  const bool is_there = !kept.isEmpty() && QDir(kept).exists();
  return QUrl::fromLocalFile(is_there ? kept
                                      : QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

// This is only a convenience, so a failure to store it is not reported.
void LastFolder::setFolder(const QUrl& folder) {
  if (!folder.isLocalFile()) {
    return;
  }
  QSettings(path_, QSettings::IniFormat).setValue(kKey, folder.toLocalFile());
  emit folderChanged();
}

void LastFolder::keep(const QUrl& file) {
  setFolder(file.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash));
}
