#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <memory>
#include <string>

#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// What is wrong with the selected model's table, for QML. The table is looked through on a worker; until
/// that is done, nothing is wrong. Lives on the queue's thread, which calls everything here.
class TableFindings : public QObject {
  Q_OBJECT
  /// "2 errors and 1 warning in Quenta.csv"; empty without any.
  Q_PROPERTY(QString summary READ summary NOTIFY changed)
  /// "Quenta.csv:12: VarLen: error: ...", one each.
  Q_PROPERTY(QStringList lines READ lines NOTIFY changed)

 public:
  /// Both outlive this object, and `workers` is joined before it goes.
  TableFindings(WorkerThreads& workers, EventQueue& events) : workers_(workers), events_(events) {}

  /// Looks through this file; what was found in another is forgotten.
  void Check(const std::string& path);

  const QString& summary() const { return found_.summary; }
  const QStringList& lines() const { return found_.lines; }

 signals:
  void changed();

 private:
  struct Found {
    QString summary;
    QStringList lines;
  };

  static Found LookThrough(const QString& path);
  void Show(Found found);

  WorkerThreads& workers_;
  EventQueue& events_;
  int checks_ = 0;  ///< tells the last check from those that it has overtaken
  Found found_;
};

}  // namespace varkel
