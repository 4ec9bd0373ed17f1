#pragma once

#include <QString>
#include <QStringList>
#include <stop_token>
#include <string>

namespace varkel {

/// The path of the program "tar", which Windows 10 and every Linux bring along; empty if there is none.
QString FindTar();

/// Packs `files` of `folder` into `archive`, an absolute path: empty, or the sentence that says why it
/// failed. tar writes to a file in the archive's folder, `archive`.TAG.part, which replaces the archive once
/// tar has ended well; after a failure the old archive stays. Blocks for 30 s at most; a stop kills tar at
/// once.
std::string RunTar(const QString& tar, const QString& folder, const QStringList& files,
                   const QString& archive, const QString& tag, const std::stop_token& stop);

}  // namespace varkel
