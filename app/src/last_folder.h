#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

/// The folder in which the next file dialog opens: the one used last, also in the tool's next run. At first,
/// or if that folder is gone, the user's documents folder. In QML the singleton `LastFolder`.
class LastFolder : public QObject {
  Q_OBJECT
  Q_PROPERTY(QUrl folder READ folder WRITE setFolder NOTIFY folderChanged)

 public:
  /// Stored in the window's own file; tests give another name.
  explicit LastFolder(QString path = {}, QObject* parent = nullptr);

  QUrl folder() const;
  void setFolder(const QUrl& folder);
  /// Remembers the folder of this file.
  Q_INVOKABLE void keep(const QUrl& file);

 signals:
  void folderChanged();

 private:
  const QString path_;
};
