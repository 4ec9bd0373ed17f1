// What a small sensor answers, taken apart by each function, and a firmware package under way to it.
//
// Input: options, the code of every exchange, then the answer that every exchange gives.
#include "VarkelCore/src/small_sensor/small_sensor.h"

#include <stop_token>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/small_sensor/small_sensor_info.h"
#include "VarkelCore/src/upgrade/marvo_upgrade.h"
#include "fuzz/input.h"
#include "tests/core/small_sensor_fixture.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Vector;

/// Options: the answer names the item that was asked for; KTC refuses; firmware frames are refused now and
/// then.
enum Option : unsigned { kEcho = 1, kKtcFails = 2, kOtaFails = 4, kMarvo = 8 };

struct Fixture {
  Fixture(unsigned options, int code, Bytes answer) {
    channel->ktc->on_command = [=](const auto& command, Vector& contents) {
      contents.assign(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(
                                                           std::min<std::size_t>(answer.size(), 255)));
      if ((options & kEcho) != 0 && !contents.empty()) contents[0] = command.payload.front();
      return code;
    };
    channel->ktc->on_ota = [=, this](const auto& frame, quarn::lidar::OtaReply& reply) {
      const std::size_t number = channel->ktc->frames.size();
      reply = {frame.type, 0};
      if ((options & kOtaFails) != 0 && number < answer.size()) reply = {answer[number], answer[number]};
      return (options & kOtaFails) != 0 && number % 7 == 0 ? code : 0;
    };
    channel->on_ktc = [=](const auto& /*request*/, Vector& reply) {
      reply.assign(answer.begin(), answer.end());
      return (options & kKtcFails) != 0 ? 1 : 0;
    };
  }

  varkel::test::RecordedReport report;
  std::shared_ptr<varkel::test::ScriptedChannel> channel = std::make_shared<varkel::test::ScriptedChannel>();
  varkel::Activity activity{{[] {}, [] {}}};
  std::atomic<int> connect_type = varkel::kKtcToSmallSensor;
};

bool IsPlain(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

void Functions(Fixture& fixture, const std::string& answer) {
  varkel::SmallSensor sensor(
      fixture.report, fixture.activity, [&] { return fixture.channel; }, fixture.connect_type);
  const auto is_reported = [&fixture] { return !fixture.report.Take().empty(); };
  sensor.SetStandby(1);
  sensor.SetSpinRate(600);
  sensor.SetReturnMode(0);
  sensor.SetImuRange(1, 1);
  sensor.SetDestinationIPandPort(answer, 1);
  sensor.SetBaudRate(answer);
  fixture.report.Take();
  const auto safety = sensor.GetLidarFunctionSafety();
  Require(safety.empty() == is_reported() && std::all_of(safety.begin(), safety.end(), IsPlain),
          "safety shows as plain text or is reported");
  Require(sensor.GetCorrection("/no such folder/correction") != 0 && is_reported(),
          "a file that can't be written is reported");
  Require(sensor.GetBaudRate().empty() == is_reported(), "a failure is reported");
  const auto destination = sensor.GetDestinationConfig(false);
  Require(destination.empty() == is_reported(), "a failure is reported");
  Require(
      destination.empty() || sensor.SetDestinationIPandPort(destination.at(0), std::stoi(destination.at(1))),
      "a destination that was read can be set");
}

void Information(Fixture& fixture, const std::string& model) {
  varkel::SmallSensorInfo info(fixture.report, fixture.activity, {[] {}, [] {}});
  info.SetModel(model);
  info.Round(*fixture.channel, std::stop_token());
  for (const auto& rows : {info.Info(), info.Versions()}) {
    for (const auto& row : rows) Require(IsPlain(row.value), "information shows as plain text");
  }
}

void Upgrade(Fixture& fixture, Bytes package) {
  fixture.report.Take();
  const varkel::test::ClaimedRun claimed(fixture.report);
  Vector made(package.begin(), package.end());
  if (made.size() >= 4) std::copy_n("QRNA", 4, made.begin());  // else nothing but its magic is ever looked at
  varkel::MarvoUpgrade(fixture.report, {std::chrono::milliseconds(0), std::chrono::milliseconds(0)})
      .Run(std::stop_token(), *fixture.channel, made, claimed.run);
  const auto lines = fixture.report.Take();
  Require(std::count(lines.begin(), lines.end(), "end") == 1, "an upgrade ends once");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const unsigned options = input.Byte();
  const int code = int{input.Byte()} - 128;
  const Bytes answer = input.Rest();
  Fixture fixture(options, code, answer);
  Functions(fixture, {answer.begin(), answer.end()});
  Information(fixture, (options & kMarvo) != 0 ? varkel::kMarvoKtc : "Zelto");
  Upgrade(fixture, answer);
  return 0;
}
