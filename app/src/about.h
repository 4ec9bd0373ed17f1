#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>

/// What the program says of itself; QML has it as the singleton `About`.
class About : public QObject {
  Q_OBJECT
  /// The sources that this program was made from.
  Q_PROPERTY(QString build READ build CONSTANT)

 public:
  using QObject::QObject;

  static QString build();
  /// The folders that a user may look for, as they are now: maps of "label", "path", "url" and "exists".
  Q_INVOKABLE static QVariantList folders();
};
