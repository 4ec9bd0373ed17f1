#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>

/// Information about the program; in QML the singleton `About`.
class About : public QObject {
  Q_OBJECT
  /// The version of the sources that this program was built from.
  Q_PROPERTY(QString build READ build CONSTANT)

 public:
  using QObject::QObject;

  static QString build();
  /// The folders that a user may look for, in their current state: maps of "label", "path", "url" and
  /// "exists".
  Q_INVOKABLE static QVariantList folders();
};
