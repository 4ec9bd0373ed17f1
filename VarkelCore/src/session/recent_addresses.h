#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

namespace varkel {

/// The addresses of recent successful connections, the most recent first. They are kept in a file of the
/// tool's own, one per line. Lives on the window's thread.
class RecentAddresses : public QObject {
  Q_OBJECT
  Q_PROPERTY(QStringList all READ all NOTIFY changed)

 public:
  static constexpr int kMaxAddresses = 10;

  RecentAddresses();
  explicit RecentAddresses(QString path) : path_(std::move(path)) {}

  QStringList all() const;
  Q_INVOKABLE void add(const QString& address);
  Q_INVOKABLE void remove(const QString& address);

 signals:
  void changed();

 private:
  void Keep(const QStringList& addresses);

  const QString path_;
};

}  // namespace varkel
