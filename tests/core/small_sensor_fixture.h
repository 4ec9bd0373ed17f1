#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VarkelCore/src/session/small_sensor_channel.h"
#include "VarkelCore/src/upgrade/upgrade_run.h"
#include "tests/support/recorded_report.h"
#include "tests/support/scripted_exchange.h"

namespace varkel::test {

using quarn::test::ScriptedExchange;
using Bytes = std::vector<std::uint8_t>;

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
    return on_ktc ? on_ktc(ktc_requests.back()) : ExchangeResult();
  }

  std::shared_ptr<ScriptedExchange> ktc = std::make_shared<ScriptedExchange>();
  std::shared_ptr<ScriptedExchange> lines;
  std::function<ExchangeResult(const KtcRequest&)> on_ktc;
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
