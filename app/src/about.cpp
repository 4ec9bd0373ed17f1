#include "app/src/about.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <QVariantMap>

#include "VarkelCore/src/session/connection_settings.h"
#include "app/src/build_id.h"
#include "app/src/startup.h"

QString About::build() {
  return kBuildId;
}

QVariantList About::folders() {
  const std::pair<const char*, QString> kFolders[] = {
      {"Log", startup::LogFolder()},
      {"Settings", QFileInfo(varkel::SettingsFile().path()).path()},
      {"Tables", QDir("Config/varID").absolutePath()},
      {"Documents", QDir("docs").absolutePath()}};
  QVariantList maps;
  for (const auto& [label, path] : kFolders) {
    maps.append(QVariantMap{{"label", label},
                            {"path", QDir::toNativeSeparators(path)},
                            {"url", QUrl::fromLocalFile(path)},
                            {"exists", QFileInfo(path).isDir()}});
  }
  return maps;
}
