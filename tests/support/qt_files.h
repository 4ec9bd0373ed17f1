#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>

inline void Put(const QString& path, const QByteArray& content) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) qFatal("Can't write a file");
}

inline QByteArray Content(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

/// Everything in the folder, by name.
inline QStringList Files(const QString& folder) {
  return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
}
