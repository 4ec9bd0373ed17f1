#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VarkelCore/src/session/small_sensor_channel.h"
#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/upgrade/upgrade_run.h"
#include "tests/support/scripted_exchange.h"

namespace varkel::test {

using quarn::test::ScriptedExchange;
using Bytes = std::vector<std::uint8_t>;

/// What was reported to the user, in order: "error: text", "success: text", "TYPE text" of the log pane.
class RecordedReport : public UserReport {
 public:
  void Log(const std::string& text, const std::string& type) override { Add(type + " " + text); }
  void Bytes(const std::string& line) override { Add("bytes: " + line); }
  void Error(const std::string& text) override { Add("error: " + text); }
  void Success(const std::string& text) override { Add("success: " + text); }

  void Add(std::string line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
  }
  /// Everything reported since the last call.
  std::vector<std::string> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }
  bool Has(const std::string& line) const {
    const std::lock_guard lock(mutex_);
    return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

/// A session without a sensor.
class ScriptedChannel : public SmallSensorChannel {
 public:
  struct KtcRequest {
    std::uint8_t command = 0;
    Bytes payload;
    bool silent = false;
    bool operator==(const KtcRequest&) const = default;
  };

  std::shared_ptr<quarn::lidar::SerialExchange> ktc_exchange() const override { return ktc; }
  std::shared_ptr<quarn::lidar::SerialExchange> line_exchange() const override { return lines; }
  ExchangeResult QueryKtc(std::uint8_t command, std::span<const std::uint8_t> payload,
                          Logged logged) override {
    ktc_requests.push_back({command, Bytes(payload.begin(), payload.end()), logged == Logged::kNo});
    Bytes reply;
    const int code = on_ktc ? on_ktc(ktc_requests.back(), reply) : 0;
    return code == 0 ? ExchangeResult(reply) : tl::unexpected(code);
  }

  std::shared_ptr<ScriptedExchange> ktc = std::make_shared<ScriptedExchange>();
  std::shared_ptr<ScriptedExchange> lines;
  std::function<int(const KtcRequest&, Bytes& reply)> on_ktc;
  std::vector<KtcRequest> ktc_requests;
};

/// A claimed upgrade that adds its end and its disconnect to the report.
struct ClaimedRun {
  explicit ClaimedRun(RecordedReport& report)
      : run{progress, total, [&report] { report.Add("end"); }, [&report] { report.Add("disconnect"); }} {}

  std::atomic<std::uint32_t> progress{7};
  std::atomic<int> total{7};
  const UpgradeRun run;
};

}  // namespace varkel::test
