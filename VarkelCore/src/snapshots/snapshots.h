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

/// The snapshots page: saves, compares and applies states of the connected sensor. Calls never block: the
/// work is done on another thread, one piece at a time, with the session that exists when it begins; a call
/// that can't begin is refused with a notice. The user's unsaved edits are never written and never lost.
/// Lives on the window's thread.
class Snapshots : public QObject {
  Q_OBJECT
  /// The sensor itself and its snapshots (SnapshotList).
  Q_PROPERTY(QObject* list READ list CONSTANT)
  /// The result of the current comparison (DifferenceList).
  Q_PROPERTY(QObject* differences READ differences CONSTANT)
  /// True while work is in progress. Refreshing the list does not count: calls made meanwhile are run after
  /// it.
  Q_PROPERTY(bool busy READ is_busy NOTIFY busyChanged)
  /// True while a change is being written.
  Q_PROPERTY(bool applying READ is_applying NOTIFY busyChanged)
  /// Of the current work, 0 to 1.
  Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
  /// The two compared states; empty before the first comparison.
  Q_PROPERTY(QString leftTitle READ left_title NOTIFY comparisonChanged)
  Q_PROPERTY(QString rightTitle READ right_title NOTIFY comparisonChanged)
  /// A remark about the comparison for the user; may be empty.
  Q_PROPERTY(QString remark READ remark NOTIFY comparisonChanged)
  /// The outcome of the last operation, as a sentence; may be empty.
  Q_PROPERTY(QString outcome READ outcome NOTIFY outcomeChanged)

 public:
  /// Everything in it outlives this object, and the workers are joined before it is destroyed.
  struct Context {
    const SensorConnection& connection;
    const ModelSelection& models;
    const ConnectionSettings& settings;  ///< of the current connection
    Activity& activity;
    BackgroundWork& work;
    EventQueue& events;
    UserReport& report;
    const ByteLogSwitch& log_bytes;
  };
  explicit Snapshots(const Context& context) : context_(context) {}

  /// What a row of the list is compared with. The sensor is always on the right.
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

  /// Updates the list with the connected sensor's snapshots; empty without a connection.
  Q_INVOKABLE void refresh();
  /// The sensor's snapshot folder, created if missing; files saved there appear in the list.
  Q_INVOKABLE QUrl folder() const;
  /// Suggests a file name for `save`.
  Q_INVOKABLE QString proposedName() const;
  Q_INVOKABLE void save(const QUrl& file);
  Q_INVOKABLE void compare(int row, int other, const QUrl& file = {});
  /// Compares the file with the sensor, or with the table's defaults if none is connected.
  Q_INVOKABLE void compareFile(const QUrl& file);
  /// Plans to write the left values of the selected rows; `planned` follows if there is something to write.
  Q_INVOKABLE void plan();
  /// Carries out the last plan.
  Q_INVOKABLE void apply();
  /// Ends the current work after its current exchange.
  Q_INVOKABLE void stop();
  /// Marks the rows that the user has edited on other pages.
  Q_INVOKABLE void showEdits();
  /// Clears the comparison when another model is selected.
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

  /// The plan shown to the user, and what it was made with.
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
  /// If the list is being refreshed, keeps the call until that ends; false otherwise.
  bool Postpone(std::function<void()> call);
  bool Refuse(const char* text);
  Session UsableSession() const;
  /// Runs `work` on a worker and passes its result to `finished` on the window's thread.
  template <typename Result>
  void Start(const Session& session, std::function<Result(SnapshotJob&)> work,
             std::function<void(Result&)> finished);
  void End();
  void Compare(const StateSource& left, const StateSource& right);
  void Show(Compared& compared, const StateSource& left, const StateSource& right);
  void Planned(Plan plan, ChangeResult& result, const QStringList& edited);
  void Applied(ChangeResult& result);
  void SetOutcome(const QString& outcome);
  void ShowProgress(std::size_t done, std::size_t total);
  ConnectTo Connector() const;

  const Context context_;
  const SnapshotFolder folder_;
  SnapshotList list_;
  DifferenceList differences_;
  std::shared_ptr<SnapshotJob> job_;  ///< null if no work is in progress
  bool refreshing_ = false;           ///< job_ is refreshing the list
  bool refresh_due_ = false;          ///< requested while other work was in progress
  std::function<void()> postponed_;   ///< requested while the list was being refreshed
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
