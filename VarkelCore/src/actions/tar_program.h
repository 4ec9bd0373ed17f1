#pragma once

#include <QString>
#include <QStringList>
#include <stop_token>
#include <string>

namespace varkel {

/// The path of the program "tar", which comes with Windows 10 and every Linux; empty if not found.
QString FindTar();

/// Packs `files` from `folder` into `archive`, an absolute path. Returns an empty text, or a sentence saying
/// why it failed. tar writes to `archive`.TAG.part, which replaces the archive once tar has succeeded; on
/// failure the old archive is kept. Blocks for 30 s at most; a stop kills tar at once.
std::string RunTar(const QString& tar, const QString& folder, const QStringList& files,
                   const QString& archive, const QString& tag, const std::stop_token& stop);

}  // namespace varkel
