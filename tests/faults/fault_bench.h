#pragma once

#include <QTemporaryDir>
#include <QUrl>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "tests/core/bench.h"

namespace varkel::test {

using Lines = std::vector<std::string>;

/// A bench that counts what its operations come to.
class FaultBench : public Bench {
 public:
  explicit FaultBench(const std::string& model_name);
  ~FaultBench() { CloseAll(); }
  FaultBench(const FaultBench&) = delete;
  FaultBench& operator=(const FaultBench&) = delete;

  /// Tries up to three times: a busy machine may miss the time in which a sensor has to accept.
  bool Connect();
  /// Until what a small sensor is asked every second was asked just now: a rule may hold for that as well.
  bool AwaitPause();
  /// Whether what the first page shows comes from the sensor.
  bool ReadsAPage();
  bool ShowsWhatTheSensorHas(int page) const;

  /// "error: text", "success: text", and the log's lines but for information.
  Lines Told() const;
  void Forget();        ///< what was told and counted so far
  bool IsBusy() const;  ///< a flag of an operation is up
  QUrl File(const QString& name) const { return QUrl::fromLocalFile(folder.filePath(name)); }
  /// A file in the bench's folder with that content.
  QUrl Package(const std::vector<std::uint8_t>& content) const;
  std::size_t files() const;
  /// Payload bytes of the replies.
  std::vector<std::size_t> TakeAnswered();

  const std::string model;
  QTemporaryDir folder;
  int ended = 0;        ///< operations that said that they are over
  int rounds = 0;       ///< of the live refresh
  int pbl_queries = 0;  ///< that are over
  bool alive = false;   ///< the last probe's answer

 private:
  bool HasSerialNumber() const;  ///< a small sensor's was read

  std::mutex mutex_;  // guards answered_
  std::vector<std::size_t> answered_;
};

}  // namespace varkel::test
