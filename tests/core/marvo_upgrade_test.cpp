#include "VarkelCore/src/upgrade/marvo_upgrade.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/core/marvo_sample.h"
#include "tests/core/small_sensor_fixture.h"

namespace varkel {
namespace {

using test::FullMarvoPackage;
using test::MarvoPackage;
using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;
using Frame = test::ScriptedExchange::OtaFrame;
using Ktc = test::ScriptedChannel::KtcRequest;

/// A sensor that accepts everything and runs from partition A.
struct MarvoFixture {
  MarvoFixture() {
    channel.ktc->on_command = [this](const test::ScriptedExchange::Command&, Bytes& contents) {
      report.Add("change mode");
      contents = {12, 0, partition};
      return 0;
    };
    channel.on_ktc = [this](const Ktc& request, Bytes&) {
      report.Add("rate");
      return request.command == 0xFF ? 0 : 1;
    };
  }
  Lines Run(const Bytes& package, std::chrono::milliseconds pause = {}, const std::stop_token& stop = {}) {
    MarvoUpgrade(report, {std::chrono::milliseconds(0), pause}).Run(stop, channel, package, claimed.run);
    return report.Take();
  }

  test::RecordedReport report;
  test::ScriptedChannel channel;
  test::ClaimedRun claimed{report};
  std::uint8_t partition = 0;
};

TEST(MarvoUpgrade, SendsEverythingInItsOrder) {
  MarvoFixture fixture;
  const Bytes package = FullMarvoPackage();
  EXPECT_EQ(fixture.Run(package),
            (Lines{"INFO Marvo OTA package parsed: flags=0x31, total_size=10000", "rate", "change mode",
                   "INFO Marvo upgrade: current partition=A", "rate",
                   "INFO Marvo upgrade: sending BMB_APP_B (type=0x02, size=2048)",
                   "INFO Marvo upgrade: BMB_APP_B completed",
                   "INFO Marvo upgrade: sending BMB_FPGA (type=0x01, size=1976)",
                   "INFO Marvo upgrade: BMB_FPGA completed",
                   "INFO Marvo upgrade: sending TMB_FPGA (type=0x00, size=1024)",
                   "INFO Marvo upgrade: TMB_FPGA completed",
                   "INFO Marvo upgrade: sending TMB_PARAM (type=0x03, size=10)",
                   "INFO Marvo upgrade: TMB_PARAM completed", "end",
                   "success: Marvo upgrade completed. The lidar will automatically reboot.", "disconnect"}));
  EXPECT_EQ(fixture.channel.ktc_requests,
            (std::vector<Ktc>{{0xFF, {0, 1, 0x39, 0x00, 0x4C, 0x4B, 0x40}, false},
                              {0xFF, {0, 1, 0x39, 0x00, 0x00, 0x25, 0x80}, false}}));
  EXPECT_EQ(fixture.channel.ktc->commands, (std::vector<test::ScriptedExchange::Command>{{3, {12, 4}}}));
  EXPECT_EQ(fixture.claimed.total, 2 + 2 + 1 + 1);
  EXPECT_EQ(fixture.claimed.progress, 6U);
}

TEST(MarvoUpgrade, OtherPartitionAndNothingToSend) {
  MarvoFixture on_b;
  on_b.partition = 3;
  EXPECT_EQ(on_b.Run(FullMarvoPackage())[3], "INFO Marvo upgrade: current partition=B");
  EXPECT_EQ(on_b.channel.ktc->frames.front(), (Frame{0x11, 1500, 2, {}}));
  MarvoFixture none;
  EXPECT_EQ(none.Run(MarvoPackage(1, {{{0, 100}}}, 100)).back(), "disconnect");
  EXPECT_EQ(none.claimed.total, 0);
  EXPECT_TRUE(none.channel.ktc->frames.empty());
}

TEST(MarvoUpgrade, EveryFailureEndsTheRunFirst) {
  Bytes wrong_magic = FullMarvoPackage();
  wrong_magic[3] = 'B';
  const auto params_at = [](test::Range range) { return MarvoPackage(16, {{{}, {}, {}, {}, range}}, 100); };
  const std::string invalid = "error: Invalid Marvo OTA upgrade package";
  const std::string no_room = "INFO Component TMB_PARAM data out of range";
  const std::string no_params = "error: Marvo upgrade: failed to extract TMB_PARAM";
  const std::string fpga = "Marvo upgrade: BMB_FPGA failed, error=9";
  const std::pair<Bytes, Lines> cases[] = {{Bytes(55), {"end", invalid}},
                                           {wrong_magic, {"INFO Invalid OTA package magic", "end", invalid}},
                                           {params_at({0, 101}), {no_room, no_room, "end", no_params}},
                                           {params_at({0xFFFFFFF0, 32}), {"rate", "end", no_params}},
                                           {FullMarvoPackage(), {"end", "error: " + fpga, "INFO " + fpga}}};
  for (const auto& [package, end] : cases) {
    MarvoFixture fixture;
    fixture.channel.ktc->on_ota = [](const Frame& frame, quarn::lidar::OtaReply& reply) {
      if (frame.type == 0x11 && frame.second == 1) reply.status = 9;
      return 0;
    };
    const Lines lines = fixture.Run(package);
    ASSERT_GE(lines.size(), end.size());
    EXPECT_EQ(Lines(lines.end() - static_cast<std::ptrdiff_t>(end.size()), lines.end()), end);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "end"), 1) << end.back();
  }
}

TEST(MarvoUpgrade, AStopEndsThePauseForTheModeChange) {
  MarvoFixture fixture;
  std::jthread worker([&](const std::stop_token& stop) {
    const Lines lines = fixture.Run(FullMarvoPackage(), std::chrono::hours(1), stop);
    EXPECT_EQ(lines.back(), "end");
  });
  while (!fixture.report.Has("INFO Marvo upgrade: current partition=A")) std::this_thread::yield();
}

}  // namespace
}  // namespace varkel
