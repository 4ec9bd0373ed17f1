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

/// One row of the lists that the page of a small sensor shows.
struct InfoRow {
  std::string label;
  std::string value;
  bool operator==(const InfoRow&) const = default;
};

/// What a small sensor says of itself, read in the background while it is connected. What has not been read
/// shows a placeholder. A failing query is logged once, not every round. Thread-safe.
class SmallSensorInfo {
 public:
  struct Events {
    std::function<void()> info_changed;  ///< a row has another value
    std::function<void()> pbl_changed;   ///< is_getting_pbl_version has
  };

  /// How often a session runs a round: the line also carries the user's commands.
  static constexpr std::chrono::milliseconds kPeriod{1000};
  /// In how many rounds a version is asked for: a sensor that knows no such query would hold up every round.
  static constexpr int kVersionTries = 3;

  SmallSensorInfo(UserReport& report, const Activity& activity, Events events)
      : report_(report), activity_(activity), events_(std::move(events)) {}

  /// The model decides on the rows, which show placeholders again.
  void SetModel(const std::string& model_name);
  /// Puts the placeholders back.
  void Reset();

  /// One round of a session: serial number, and the destination where there is one; then the versions that
  /// are not known yet. Does nothing while an upgrade runs. A round that is stopped reports nothing.
  void Round(SmallSensorChannel& channel, const std::stop_token& stop);

  std::vector<InfoRow> Info() const;
  std::vector<InfoRow> Versions() const;
  bool is_getting_pbl_version() const { return getting_pbl_; }

 private:
  /// One round's view of its session.
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
  std::map<std::string, std::string> failures_;  ///< by query: what was logged last
  std::map<std::string, int> version_tries_;     ///< by label: rounds that asked; kVersionTries once known
};

}  // namespace varkel
