#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VarkelCore/src/session/sensor_connection.h"
#include "VarkelCore/src/session/session_makers.h"
#include "VarkelCore/src/snapshots/difference_list.h"
#include "VarkelCore/src/snapshots/snapshot_job.h"
#include "VarkelCore/src/snapshots/snapshot_list.h"
#include "VarkelCore/src/tasks/background_work.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// The page of snapshots: keeps, compares and applies states of the connected sensor. Calls never wait; each
/// works on another thread with the session that is there when it begins, one after the other, and is refused
/// with a notice when it can't begin. What the user has edited and not saved is never written and never
/// lost. Lives on the window's thread.
class Snapshots : public QObject {
  Q_OBJECT
  /// The sensor's snapshots below the sensor itself (SnapshotList).
  Q_PROPERTY(QObject* list READ list CONSTANT)
  /// What the present comparison found (DifferenceList).
  Q_PROPERTY(QObject* differences READ differences CONSTANT)
  /// True while work goes on, but for looking the list up: what is asked for meanwhile follows it.
  Q_PROPERTY(bool busy READ is_busy NOTIFY busyChanged)
  /// A change is being written.
  Q_PROPERTY(bool applying READ is_applying NOTIFY busyChanged)
  /// Of the present work, 0 to 1.
  Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
  /// What is compared; empty before the first comparison.
  Q_PROPERTY(QString leftTitle READ left_title NOTIFY comparisonChanged)
  Q_PROPERTY(QString rightTitle READ right_title NOTIFY comparisonChanged)
  /// What the user has to know of the comparison; may be empty.
  Q_PROPERTY(QString remark READ remark NOTIFY comparisonChanged)
  /// What the last work came to, as a sentence; may be empty.
  Q_PROPERTY(QString outcome READ outcome NOTIFY outcomeChanged)

 public:
  /// Everything outlives this object, and the workers are joined before it goes.
  struct Context {
    const SensorConnection& connection;
    const ModelSelection& models;
    const ConnectionSettings& settings;  ///< of the present connection
    Activity& activity;
    BackgroundWork& work;
    EventQueue& events;
    UserReport& report;
    const ByteLogSwitch& log_bytes;
  };
  explicit Snapshots(const Context& context) : context_(context) {}

  /// With what a row of the list is compared. A comparison with the sensor has it on the right.
  enum Other { Sensor = StateSource::kSensor, File = StateSource::kFile, Defaults = StateSource::kDefaults };
  Q_ENUM(Other)

  QObject* list() { return &list_; }
  QObject* differences() { return &differences_; }
  bool is_busy() const { return job_ && !refreshing_; }
  bool is_applying() const { return context_.activity.is_changing(); }
  double progress() const { return progress_; }
  QString left_title() const { return left_title_; }
  QString right_title() const { return right_title_; }
  QString remark() const { return remark_; }
  QString outcome() const { return outcome_; }

  /// Looks the connected sensor's snapshots up; without one the list is empty.
  Q_INVOKABLE void refresh();
  /// The sensor's folder of snapshots, which is made: what is saved there stands in the list.
  Q_INVOKABLE QUrl folder() const;
  /// Proposes a file name.
  Q_INVOKABLE QString proposedName() const;
  Q_INVOKABLE void save(const QUrl& file);
  Q_INVOKABLE void compare(int row, int other, const QUrl& file = {});
  /// With the sensor, or with the table's defaults when none is connected.
  Q_INVOKABLE void compareFile(const QUrl& file);
  /// Plans to write the selected rows' left values; `planned` follows when there is something to write.
  Q_INVOKABLE void plan();
  /// Carries the last plan out.
  Q_INVOKABLE void apply();
  /// Ends the present work with its present exchange.
  Q_INVOKABLE void stop();
  /// Marks the rows that the user has edited on other pages.
  Q_INVOKABLE void showEdits();
  /// Forgets the comparison, for another model.
  Q_INVOKABLE void clear();

 signals:
  void busyChanged();
  void progressChanged();
  void comparisonChanged();
  void outcomeChanged();
  /// `text` says what `apply` would write.
  void planned(QString text);

 private:
  using Session = std::shared_ptr<SensorSession>;

  /// What the user was shown, and what it was planned with.
  struct Plan {
    Session session;
    std::shared_ptr<Model> model;
    ChangeRequest request;
    std::vector<ChangeOutcome> changes;
  };
  struct Compared {
    SensorState left;
    std::vector<DifferenceRow> rows;
    QString remark;
  };

  enum class Needs { kNothing, kSensor };
  bool MayBegin(Needs needs);
  /// Keeps the call for the end of the look-up that runs; false when none does.
  bool Postpone(std::function<void()> call);
  bool Refuse(const char* text);
  Session UsableSession() const;
  /// Runs `work` on a worker and hands what it returns to `finished` on the window's thread.
  template <typename Result>
  void Start(const Session& session, std::function<Result(SnapshotJob&)> work,
             std::function<void(Result&)> finished);
  void End();
  void Compare(const StateSource& left, const StateSource& right);
  void Show(Compared& compared, const StateSource& left, const StateSource& right);
  void Planned(Plan plan, ChangeResult& result, const QStringList& edited);
  void Applied(ChangeResult& result);
  void Tell(const QString& outcome);
  void ShowProgress(std::size_t done, std::size_t total);
  ConnectTo Connector() const;

  const Context context_;
  const SnapshotFolder folder_;
  SnapshotList list_;
  DifferenceList differences_;
  std::shared_ptr<SnapshotJob> job_;  ///< null between two pieces of work
  bool refreshing_ = false;           ///< job_ looks the list up
  bool refresh_due_ = false;          ///< asked for while something else ran
  std::function<void()> postponed_;   ///< asked for while the list was looked up
  double progress_ = 0;
  std::string sn_;
  std::shared_ptr<const SensorState> left_;
  QString left_title_;
  QString right_title_;
  QString remark_;
  QString outcome_;
  std::optional<Plan> plan_;
};

}  // namespace varkel
