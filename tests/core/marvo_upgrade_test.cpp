#include "VarkelCore/src/marvo_upgrade.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "tests/core/marvo_sample.h"
#include "tests/core/small_sensor_bench.h"

namespace varkel {
namespace {

using test::FullMarvoPackage;
using test::MarvoPackage;
using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;
using Frame = test::ScriptedExchange::OtaFrame;
using Ktc = test::ScriptedLink::KtcRequest;

constexpr MarvoUpgrade::Pauses kNoPauses = {std::chrono::milliseconds(0), std::chrono::milliseconds(0)};

/// A sensor that takes everything, running from partition A.
struct Bench {
  Bench() {
    link.ktc->on_command = [this](const test::ScriptedExchange::Command&, Bytes& contents) {
      report.Add("change mode");
      contents = {12, 0, partition};
      return mode_result;
    };
    link.on_ktc = [this](const Ktc& request, Bytes&) {
      report.Add("rate");
      return link.ktc_requests.size() == failing_rate ? 5 : (request.command == 0xFF ? 0 : 1);
    };
  }

  Lines Run(const Bytes& package) {
    MarvoUpgrade(report, link, kNoPauses).Run(std::stop_token(), package, claimed.run);
    return report.Take();
  }

  test::RecordedReport report;
  test::ScriptedLink link;
  test::ClaimedRun claimed{report};
  std::uint8_t partition = 0;
  int mode_result = 0;
  std::size_t failing_rate = 0;
};

TEST(MarvoUpgrade, SendsEverythingInItsOrder) {
  Bench bench;
  EXPECT_EQ(bench.Run(FullMarvoPackage()),
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
  EXPECT_EQ(bench.link.ktc_requests, (std::vector<Ktc>{{0xFF, {0, 1, 0x39, 0x00, 0x4C, 0x4B, 0x40}, false},
                                                       {0xFF, {0, 1, 0x39, 0x00, 0x00, 0x25, 0x80}, false}}));
  EXPECT_EQ(bench.link.ktc->commands, (std::vector<test::ScriptedExchange::Command>{{3, {12, 4}}}));
  EXPECT_EQ(bench.claimed.total, 2 + 2 + 1 + 1);
  EXPECT_EQ(bench.claimed.progress, 6U);
  // The FPGA image goes out without its preamble.
  const Bytes package = FullMarvoPackage();
  Bytes fpga;
  bool in_fpga = false;
  for (const Frame& frame : bench.link.ktc->frames) {
    if (frame.type == 0x11) in_fpga = frame.second == 1;
    if (frame.type == 0x12 && in_fpga) fpga.insert(fpga.end(), frame.data.begin(), frame.data.end());
  }
  constexpr std::ptrdiff_t kFpgaBegin = 56 + 3548;
  EXPECT_EQ(fpga, Bytes(package.begin() + kFpgaBegin + 1024, package.begin() + kFpgaBegin + 3000));
}

TEST(MarvoUpgrade, OtherPartitionAndNothingToSend) {
  Bench on_b;
  on_b.partition = 3;
  const Lines lines = on_b.Run(FullMarvoPackage());
  EXPECT_EQ(lines[3], "INFO Marvo upgrade: current partition=B");
  EXPECT_EQ(lines[5], "INFO Marvo upgrade: sending BMB_APP_A (type=0x02, size=1500)");
  Bench none;
  EXPECT_EQ(none.Run(MarvoPackage(1, {{{0, 100}}}, 100)).back(), "disconnect");
  EXPECT_EQ(none.claimed.total, 0);
  EXPECT_TRUE(none.link.ktc->frames.empty());
}

TEST(MarvoUpgrade, EveryFailureEndsTheRunFirst) {
  struct Case {
    Lines end;  ///< the last lines
    Bytes package;
    std::size_t failing_rate = 0;
    int mode_result = 0;
    bool has_exchange = true;
    int ota_result = 0;
    std::uint8_t fpga_status = 0;
  };
  const Bytes full = FullMarvoPackage();
  Bytes wrong_magic = full;
  wrong_magic[3] = 'B';
  const auto params_at = [](test::Range range) { return MarvoPackage(16, {{{}, {}, {}, {}, range}}, 100); };
  const std::string kInvalid = "error: Invalid Marvo OTA upgrade package";
  const std::string kFailed = "error: Marvo upgrade: ";
  const std::string kNoRoom = "INFO Component TMB_PARAM data out of range";
  const std::string kApp = "Marvo upgrade: BMB_APP_B failed, error=-1";
  const std::string kFpga = "Marvo upgrade: BMB_FPGA failed, error=9";
  const std::vector<Case> cases = {
      {{"end", kInvalid}, Bytes(55)},
      {{"INFO Invalid OTA package magic", "end", kInvalid}, wrong_magic},
      {{"rate", "end", kFailed + "set baudrate failed"}, full, 1},
      {{"change mode", "end", kFailed + "change mode failed"}, full, 0, -3},
      {{"rate", "end", kFailed + "change mode failed"}, full, 0, 0, false},
      {{"rate", "end", kFailed + "set upgrade baudrate failed"}, full, 2},
      {{kNoRoom, kNoRoom, "end", kFailed + "failed to extract TMB_PARAM"}, params_at({0, 101})},
      {{"rate", "end", kFailed + "failed to extract TMB_PARAM"}, params_at({0xFFFFFFF0, 32})},
      {{"end", "error: " + kApp, "INFO " + kApp}, full, 0, 0, true, -1},
      {{"end", "error: " + kFpga, "INFO " + kFpga}, full, 0, 0, true, 0, 9},
  };
  for (const Case& c : cases) {
    Bench bench;
    bench.failing_rate = c.failing_rate;
    bench.mode_result = c.mode_result;
    bench.link.ktc->on_ota = [&c](const Frame& frame, quarn::lidar::OtaReply& reply) {
      if (frame.type == 0x11 && frame.second == 1) reply.status = c.fpga_status;
      return c.ota_result;
    };
    if (!c.has_exchange) bench.link.ktc = nullptr;
    const Lines lines = bench.Run(c.package);
    ASSERT_GE(lines.size(), c.end.size());
    EXPECT_EQ(Lines(lines.end() - static_cast<std::ptrdiff_t>(c.end.size()), lines.end()), c.end);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "end"), 1) << c.end.back();
  }
}

TEST(MarvoUpgrade, AStopEndsThePauseForTheModeChange) {
  Bench bench;
  std::stop_source stop;
  const auto start = std::chrono::steady_clock::now();
  std::jthread worker([&] {
    MarvoUpgrade(bench.report, bench.link, {std::chrono::milliseconds(0), std::chrono::hours(1)})
        .Run(stop.get_token(), FullMarvoPackage(), bench.claimed.run);
  });
  while (!bench.report.Has("INFO Marvo upgrade: current partition=A")) std::this_thread::yield();
  stop.request_stop();
  worker.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(bench.report.Take().back(), "end");
}

TEST(SerialUpgrade, ReportsItsOutcomeAndDisconnects) {
  const std::string kFailed = "Upgrade package transfer failed or is terminated. error:3";
  for (const std::uint8_t status : Bytes{0, 3}) {
    test::RecordedReport report;
    test::ScriptedExchange exchange;
    exchange.on_ota = [status](const Frame&, quarn::lidar::OtaReply& reply) {
      reply.status = status;
      return 0;
    };
    test::ClaimedRun claimed(report);
    SendOverSerial(std::stop_token(), exchange, Bytes(1025), 1, report, claimed.run);
    EXPECT_EQ(report.Take(), status != 0
                                 ? (Lines{"end", "error: " + kFailed, "INFO " + kFailed, "disconnect"})
                                 : (Lines{"end",
                                          "success: Upgrade package transmitted successfully. The lidar will "
                                          "automatically reboot.",
                                          "disconnect"}));
    EXPECT_EQ(exchange.frames.front(), (Frame{1, 1025, 1, {}}));
    EXPECT_EQ(claimed.progress, status == 0 ? 2U : 0U);
  }
}

}  // namespace
}  // namespace varkel
