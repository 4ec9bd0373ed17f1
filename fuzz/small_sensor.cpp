// What a small sensor answers, taken apart by each function, and a firmware package under way to it.
//
// Input: options, the code of every exchange, then the answer that every exchange gives.
#include "VarkelCore/src/small_sensor/small_sensor.h"

#include <stop_token>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/small_sensor/small_sensor_info.h"
#include "VarkelCore/src/upgrade/marvo_upgrade.h"
#include "fuzz/input.h"
#include "tests/core/small_sensor_bench.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Vector;

/// Options: the answer names the item that was asked for; KTC refuses; firmware frames are refused now and
/// then.
enum Option : unsigned { kEcho = 1, kKtcFails = 2, kOtaFails = 4, kMarvo = 8 };

struct Bench {
  Bench(unsigned options, int code, Bytes answer) {
    link.ktc->on_command = [=](const auto& command, Vector& contents) {
      contents.assign(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(
                                                           std::min<std::size_t>(answer.size(), 255)));
      if ((options & kEcho) != 0 && !contents.empty()) contents[0] = command.payload.front();
      return code;
    };
    link.ktc->on_ota = [=, this](const auto& frame, quarn::lidar::OtaReply& reply) {
      const std::size_t number = link.ktc->frames.size();
      reply = {frame.type, 0};
      if ((options & kOtaFails) != 0 && number < answer.size()) reply = {answer[number], answer[number]};
      return (options & kOtaFails) != 0 && number % 7 == 0 ? code : 0;
    };
    link.on_ktc = [=](const auto& /*request*/, Vector& reply) {
      reply.assign(answer.begin(), answer.end());
      return (options & kKtcFails) != 0 ? 1 : 0;
    };
  }

  varkel::test::RecordedReport report;
  varkel::test::ScriptedLink link;
};

bool IsPlain(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

void Functions(Bench& bench, const std::string& answer) {
  varkel::SmallSensor sensor(bench.report, bench.link,
                             {[] { return false; }, [] { return varkel::kKtcToSmallSensor; }, [](int) {}});
  const auto told = [&bench] { return !bench.report.Take().empty(); };
  sensor.SetStandby(1);
  sensor.SetSpinRate(600);
  sensor.SetReturnMode(0);
  sensor.SetImuRange(1, 1);
  sensor.SetDestinationIPandPort(answer, 1);
  sensor.SetBaudRate(answer);
  bench.report.Take();
  const auto safety = sensor.GetLidarFunctionSafety();
  Require(safety.empty() == told() && std::all_of(safety.begin(), safety.end(), IsPlain),
          "safety shows as plain text or is told");
  Require(sensor.GetCorrection("/no such folder/correction") != 0 && told(),
          "a file that can't be written is told");
  Require(sensor.GetBaudRate().empty() == told(), "a failure is told");
  const auto destination = sensor.GetDestinationConfig(false);
  Require(destination.empty() == told(), "a failure is told");
  Require(
      destination.empty() || sensor.SetDestinationIPandPort(destination.at(0), std::stoi(destination.at(1))),
      "a destination that was read can be set");
}

void Information(Bench& bench, const std::string& model) {
  varkel::SmallSensorInfo info(bench.report, bench.link, {[] { return false; }, [] {}, [] {}});
  info.SetModel(model);
  info.Round(std::stop_token());
  info.ReadMarvoVersions();
  for (const auto& rows : {info.Info(), info.Versions()}) {
    for (const auto& row : rows) Require(IsPlain(row.value), "information shows as plain text");
  }
}

void Upgrade(Bench& bench, Bytes package) {
  bench.report.Take();
  const varkel::test::ClaimedRun claimed(bench.report);
  varkel::MarvoUpgrade(bench.report, bench.link, {std::chrono::milliseconds(0), std::chrono::milliseconds(0)})
      .Run(std::stop_token(), package, claimed.run);
  const auto lines = bench.report.Take();
  Require(std::count(lines.begin(), lines.end(), "end") == 1, "an upgrade ends once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const unsigned options = input.Byte();
  const int code = int{input.Byte()} - 128;
  const Bytes answer = input.Rest();
  Bench bench(options, code, answer);
  Functions(bench, {answer.begin(), answer.end()});
  Information(bench, (options & kMarvo) != 0 ? varkel::kMarvoKtc : "Zelto");
  Upgrade(bench, answer);
  return 0;
}
