#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "VarkelCore/src/tasks/event_queue.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/tasks/worker_threads.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The findings about the selected model's table: those of loading it, for the log, and those of its lint,
/// for QML. The table is linted on a worker; until that is done, there are no lint findings. Lives on the
/// queue's thread, which makes all calls.
class TableFindings : public QObject {
  Q_OBJECT
  /// "2 errors and 1 warning in Quenta.csv"; empty if there are none.
  Q_PROPERTY(QString summary READ summary NOTIFY changed)
  /// "Quenta.csv:12: VarLen: error: ...", one each.
  Q_PROPERTY(QStringList lines READ lines NOTIFY changed)

 public:
  /// All arguments outlive this object, and `workers` is joined before it is destroyed.
  TableFindings(WorkerThreads& workers, EventQueue& events, UserReport& report)
      : workers_(workers), events_(events), report_(report) {}

  /// Another table has been loaded: reports the findings of loading it from the event loop, then lints it and
  /// warns of each field that a save would put at a wrong place. The findings about the previous table are
  /// dropped, and a lint of it that is still running reports nothing.
  void Check(const LoadReport& loaded);

  const QString& summary() const { return found_.summary; }
  const QStringList& lines() const { return found_.lines; }

 signals:
  void changed();

 private:
  struct Found {
    QString summary;
    QStringList lines;
    std::vector<std::string> misplaced;  ///< texts of the findings that concern a save
  };

  static Found Lint(const QString& path);
  void ReportLater(const LoadReport& loaded);
  void Show(Found found);

  WorkerThreads& workers_;
  EventQueue& events_;
  UserReport& report_;
  int checks_ = 0;  ///< distinguishes the latest check from earlier ones still running
  Found found_;
};

}  // namespace varkel
