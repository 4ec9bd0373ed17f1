#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

/// Where the next question for a file starts: the folder of the last answer, also in the tool's next run; at
/// first, or when that folder is gone, the user's documents. QML has it as the singleton `LastFolder`.
class LastFolder : public QObject {
  Q_OBJECT
  Q_PROPERTY(QUrl folder READ folder WRITE setFolder NOTIFY folderChanged)

 public:
  /// Kept in a file of the window's own; a name for it in tests.
  explicit LastFolder(QString path = {}, QObject* parent = nullptr);

  QUrl folder() const;
  void setFolder(const QUrl& folder);
  /// The folder that this file is in.
  Q_INVOKABLE void keep(const QUrl& file);

 signals:
  void folderChanged();

 private:
  const QString path_;
};
