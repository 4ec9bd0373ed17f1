#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/session/activity.h"
#include "VarkelCore/src/session/small_sensor_channel.h"
#include "VarkelCore/src/tasks/user_report.h"

namespace varkel {

/// A row of the lists on the page of a small sensor.
struct InfoRow {
  std::string label;
  std::string value;
  bool operator==(const InfoRow&) const = default;
};

/// The information that a small sensor reports about itself, read in the background while it is connected.
/// Values that have not been read show a placeholder. A failing query is logged once, not every round.
/// Thread-safe.
class SmallSensorInfo {
 public:
  struct Events {
    std::function<void()> info_changed;  ///< the value of a row changed
    std::function<void()> pbl_changed;   ///< is_getting_pbl_version changed
  };

  /// Time between rounds: the line also carries the user's commands.
  static constexpr std::chrono::milliseconds kPeriod{1000};
  /// Rounds in which a version is requested: a sensor that lacks the query would delay every round.
  static constexpr int kVersionTries = 3;

  SmallSensorInfo(UserReport& report, const Activity& activity, Events events)
      : report_(report), activity_(activity), events_(std::move(events)) {}

  /// Chooses the model's rows and resets them to placeholders.
  void SetModel(const std::string& model_name);
  /// Resets all rows to placeholders.
  void Reset();

  /// One round of a session: serial number, the destination if the model has one, and the versions that are
  /// not known yet. Does nothing during an upgrade. A round that is stopped reports nothing.
  void Round(SmallSensorChannel& channel, const std::stop_token& stop);

  std::vector<InfoRow> Info() const;
  std::vector<InfoRow> Versions() const;
  bool is_getting_pbl_version() const { return getting_pbl_; }

 private:
  /// What the queries of one round share.
  struct Query {
    SmallSensorChannel& channel;
    const std::stop_token& stop;
  };
  struct Version {
    const char* label;
    std::uint8_t which;
    const char* failure;
  };

  std::vector<Version> VersionsToRead();
  void ReadSerialNumber(const Query& query);
  void ReadDestinationRow(const Query& query);
  void ReadVersion(const Query& query, const Version& version);
  void SetGettingPbl(bool running);
  void Show(std::vector<InfoRow>& rows, const char* label, const std::string& value);
  void LogFailure(const Query& query, const char* label, const std::string& text);
  void FillPlaceholders();  // with mutex_ held

  UserReport& report_;
  const Activity& activity_;
  const Events events_;
  std::atomic<bool> getting_pbl_ = false;

  mutable std::mutex mutex_;  // guards what follows
  std::string model_name_;
  std::vector<InfoRow> info_;
  std::vector<InfoRow> versions_;
  std::map<std::string, std::string> failures_;  ///< by query: the last logged failure
  std::map<std::string, int> version_tries_;     ///< by label: rounds so far; kVersionTries once known
};

}  // namespace varkel
