#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <memory>
#include <string>

#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/worker_threads.h"

namespace varkel {

/// The lint findings of the selected model's table, for QML. The table is checked on a worker; until that is
/// done, there are no findings. Lives on the queue's thread, which makes all calls.
class TableFindings : public QObject {
  Q_OBJECT
  /// "2 errors and 1 warning in Quenta.csv"; empty if there are none.
  Q_PROPERTY(QString summary READ summary NOTIFY changed)
  /// "Quenta.csv:12: VarLen: error: ...", one each.
  Q_PROPERTY(QStringList lines READ lines NOTIFY changed)

 public:
  /// Both outlive this object, and `workers` is joined before it goes.
  TableFindings(WorkerThreads& workers, EventQueue& events) : workers_(workers), events_(events) {}

  /// Checks this file; the findings of the previous file are dropped.
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

  static Found Lint(const QString& path);
  void Show(Found found);

  WorkerThreads& workers_;
  EventQueue& events_;
  int checks_ = 0;  ///< distinguishes the latest check from earlier ones still running
  Found found_;
};

}  // namespace varkel
