#pragma once

#include <QEventLoop>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>
#include <QVariantMap>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VarkelCore/src/varkel_manager.h"
#include "simulator/src/simulated_sensor.h"
#include "simulator/src/simulated_small_sensor.h"

namespace varkel::test {

using Lines = std::vector<std::string>;

/// A controller with a sensor of its model, and what it told the user. Lives on one thread of its own, where
/// it runs the controller's events; any number of them stand side by side.
class FaultBench {
 public:
  explicit FaultBench(const std::string& model_name);
  ~FaultBench();
  FaultBench(const FaultBench&) = delete;
  FaultBench& operator=(const FaultBench&) = delete;

  /// Runs events until the condition holds; false when the time ran out.
  bool Wait(const std::function<bool()>& condition, int seconds = 20);
  /// Tries up to three times: a busy machine may miss the time in which a sensor has to accept.
  bool Connect();
  /// Until what a small sensor is asked every second was asked just now: a rule may hold for that as well.
  bool AwaitPause();
  /// Whether what the first page shows comes from the sensor.
  bool ReadsAPage();

  void Misbehave(const std::string& rule);
  void Behave();
  void StopSensor();
  void StartSensor();  ///< and tells the controller where

  void Edit(const QString& var_name, const QString& text);
  bool IsEdited(const QString& var_name) const;
  bool ShowsWhatTheSensorHas(int page) const;  ///< but for the live values
  void Forget();                               ///< what was told and counted so far
  bool IsBusy() const;                         ///< a flag of an operation is up
  QUrl File(const QString& name) const { return QUrl::fromLocalFile(folder.filePath(name)); }
  /// A file in the bench's folder with that content.
  QUrl Package(const std::vector<std::uint8_t>& content) const;
  std::size_t files() const;

  struct Answered {
    std::uint8_t command = 0;
    std::size_t size = 0;  ///< payload bytes of the reply
  };
  std::vector<Answered> TakeAnswered();

  const std::string model;
  std::unique_ptr<sim::SimulatedSensor> sensor;  ///< null for a sensor on serial lines
  std::unique_ptr<sim::SimulatedSmallSensor> on_lines;
  std::unique_ptr<VarkelManager> manager;
  QTemporaryDir folder;
  Lines told;           ///< "error: text", "success: text", and the log's lines but for information
  int ended = 0;        ///< operations that said that they are over
  int rounds = 0;       ///< of the live refresh
  int pbl_queries = 0;  ///< that are over
  bool alive = false;   ///< the last probe's answer

 private:
  struct Place {
    int page = -1;
    int group = -1;
    int index = -1;
  };
  using Visit = std::function<void(const Place&, const QVariantMap&)>;
  void EachVariable(const Visit& visit) const;
  void Listen();
  bool HasSerialNumber() const;  ///< a small sensor's was read

  QEventLoop loop_;
  std::mutex mutex_;  // guards answered_
  std::vector<Answered> answered_;
};

}  // namespace varkel::test
