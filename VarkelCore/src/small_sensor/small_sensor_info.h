#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "VarkelCore/src/session/small_sensor_link.h"
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
  struct Host {
    std::function<bool()> is_upgrading;
    std::function<void()> info_changed;  ///< a row has another value
    std::function<void()> pbl_changed;   ///< is_getting_pbl_version has
  };

  SmallSensorInfo(UserReport& report, SmallSensorLink& link, Host host);
  ~SmallSensorInfo() { Stop(); }
  SmallSensorInfo(const SmallSensorInfo&) = delete;
  SmallSensorInfo& operator=(const SmallSensorInfo&) = delete;

  /// The model decides on the rows, which begin anew.
  void SetModel(const std::string& model_name);
  /// Puts the placeholders back.
  void Reset();

  /// Starts the information thread: a round at once, then one a second. Does nothing while it runs.
  void Start();
  /// Ends and joins it. The caller interrupts what the round may wait for.
  void Stop();

  /// One round: serial number, and the destination where there is one; the PBL version until it was asked for
  /// once. Nothing while an upgrade runs.
  void Round(const std::stop_token& stop);

  /// The versions of a Marvo sensor's boards.
  void ReadMarvoVersions();

  std::vector<InfoRow> Info() const;
  std::vector<InfoRow> Versions() const;
  bool is_getting_pbl_version() const { return getting_pbl_; }

 private:
  void ReadSerialNumber();
  void ReadDestinationRow();
  void ReadPblVersion();
  void ReadVersion(const char* label, std::uint8_t which, const char* failure);
  void Show(std::vector<InfoRow>& rows, const char* label, const std::string& value);
  void LogFailure(const char* query, const std::string& text);
  void FillPlaceholders();  // with mutex_ held

  UserReport& report_;
  SmallSensorLink& link_;
  const Host host_;
  std::atomic<bool> getting_pbl_ = false;

  mutable std::mutex mutex_;  // guards what follows
  std::string model_name_;
  std::vector<InfoRow> info_;
  std::vector<InfoRow> versions_;
  std::map<std::string, std::string> failures_;  ///< by query: what was logged last
  bool pbl_asked_ = false;

  std::mutex thread_mutex_;  // guards thread_
  std::jthread thread_;
};

}  // namespace varkel
