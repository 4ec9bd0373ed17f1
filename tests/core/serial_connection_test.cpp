#include "VarkelCore/src/serial_connection.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "VarkelCore/src/small_sensor_info.h"
#include "libquarn/Source/src/serial_frame.h"
#include "tests/core/small_sensor_bench.h"
#include "tests/quarn/fake_peer.h"
#include "tests/quarn/test_support.h"
#include "tests/support/pseudo_terminal.h"

namespace varkel {
namespace {

using quarn::lidar::EncodeReplyFrame;
using quarn::lidar::ReplyKind;
using quarn::test::Answer;
using quarn::test::Eventually;
using quarn::test::FakePeer;
using quarn::test::PseudoTerminal;
using quarn::test::Request;
using quarn::test::TimeOf;
using test::Bytes;
using Lines = std::vector<std::string>;

struct Bench {
  ConnectionSettings settings;
  test::RecordedReport report;
  SerialConnection connection{
      report,
      {[this] { report.Add("start info"); }, [this] { report.Add("marvo versions"); },
       [this] { report.Add(connection.is_connecting() ? "too early" : "connected"); }}};
};

struct LineBench : Bench {
  LineBench() {
    settings.serial_port_485 = rs485.name();
    settings.serial_port_232 = uart.name();
    settings.baud_rate = 3125000;
  }
  bool Connect() { return connection.InitSerial(std::stop_token(), settings); }

  PseudoTerminal rs485;
  PseudoTerminal uart;
};

TEST(SerialLines, ConnectTalkAndDisconnect) {
  LineBench bench;
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(bench.Connect());
    EXPECT_EQ(bench.report.Take(), (Lines{"INFO Lidar connected", "connected", "start info"}));
    EXPECT_TRUE(bench.connection.is_connected());
    EXPECT_FALSE(bench.connection.is_connecting());
    EXPECT_TRUE(bench.connection.CheckLidarConnection());
    EXPECT_EQ(bench.rs485.rate(), 3125000U);
    EXPECT_EQ(bench.uart.rate(), 9600U);
    EXPECT_FALSE(bench.connection.KtcExchange());

    bench.connection.set_log_bytes(round == 1);
    const auto exchange = bench.connection.Exchange();
    ASSERT_TRUE(exchange);
    Bytes body;
    auto result = std::async(std::launch::async, [&] {
      return exchange->QueryCommand(3, Bytes{8, 0}, body, 10000);
    });
    bench.uart.Read(21);
    bench.rs485.Write(EncodeReplyFrame(ReplyKind::kCommand, 3, Bytes{8, 0, 0}, 5));
    EXPECT_EQ(result.get(), 0);
    EXPECT_EQ(bench.report.Take().size(), round == 1 ? 2U : 0U);

    bench.connection.Interrupt();
    bench.connection.Drop();
    EXPECT_FALSE(bench.connection.is_connected());
    EXPECT_FALSE(bench.connection.CheckLidarConnection());
    EXPECT_FALSE(bench.connection.Exchange());
    EXPECT_LT(exchange->QueryCommand(3, Bytes{8, 0}, body, 10000), 0);
  }
}

TEST(SerialLines, SayWhichPortDoesNotOpen) {
  LineBench bench;
  const auto refusal = [&bench](const char* rs485, const char* uart) {
    bench.settings.serial_port_485 = rs485;
    bench.settings.serial_port_232 = uart;
    EXPECT_FALSE(bench.Connect());
    EXPECT_FALSE(bench.connection.is_connecting());
    return bench.report.Take();
  };
  const std::string rs485 = bench.settings.serial_port_485;
  const std::string uart = bench.settings.serial_port_232;
  EXPECT_EQ(refusal(rs485.c_str(), "/dev/no-such-port"),
            (Lines{"error: Connection Failed. Please check your UART serial port.",
                   "ERROR Connection Error: UART serial open fail"}));
  EXPECT_EQ(refusal("/dev/no-such-port", "/dev/no-such-port"),
            (Lines{"error: Connection Failed. Please check your RS485 serial port.",
                   "ERROR Connection Error: RS485 serial open fail"}));
  // One port for both lines is one too few.
  EXPECT_EQ(refusal(uart.c_str(), uart.c_str()).back(), "ERROR Connection Error: UART serial open fail");
  bench.settings.serial_port_485 = rs485;
  EXPECT_TRUE(bench.Connect());  // the line that did open is free again
}

TEST(SerialLines, APulledLineShowsAndEndsAnUpgrade) {
  LineBench bench;
  ASSERT_TRUE(bench.Connect());
  bench.report.Take();
  test::ClaimedRun claimed(bench.report);
  std::jthread worker([&, exchange = bench.connection.Exchange()] {
    SendOverSerial(std::stop_token(), *exchange, Bytes(5000), 0, bench.report, claimed.run);
  });
  bench.uart.Read(29);
  bench.uart.Write(EncodeReplyFrame(ReplyKind::kOta, 1, Bytes{0}, 5));
  bench.uart.Read(29 + 1024);
  const auto time = TimeOf([&] {
    bench.uart.Pull();
    worker.join();
  });
  EXPECT_LT(time, quarn::test::kAtOnce);
  EXPECT_FALSE(bench.connection.CheckLidarConnection());
  EXPECT_EQ(bench.report.Take(),
            (Lines{"end", "error: Upgrade package transfer failed or is terminated. error:-1",
                   "INFO Upgrade package transfer failed or is terminated. error:-1", "disconnect"}));
}

TEST(SerialLines, AStopLeavesNoLineOpen) {
  LineBench bench;
  std::stop_source stop;
  stop.request_stop();
  EXPECT_FALSE(bench.connection.InitSerial(stop.get_token(), bench.settings));
  EXPECT_EQ(bench.report.Take(), Lines{});
  EXPECT_FALSE(bench.connection.is_connecting());
  EXPECT_FALSE(bench.connection.CheckLidarConnection());
}

/// A sensor behind KTC that answers every tunnelled get of the serial number, and KTC command 8 only.
Answer Serve(const Request& request) {
  Bytes payload;
  std::uint8_t return_code = request.cmd == 7 ? 3 : 0;
  if (request.cmd == 0xFF && request.payload.size() > 11 && request.payload[1] == 2) {
    payload = {0, 2};
    const Bytes reply = EncodeReplyFrame(ReplyKind::kCommand, 2, Bytes{10, 0, 'S', '1'}, 5);
    payload.insert(payload.end(), reply.begin(), reply.end());
  }
  return {FakePeer::Reply(1, request.cmd, payload, return_code)};
}

struct KtcBench : Bench {
  explicit KtcBench(FakePeer::Handler handler = Serve) : peer(1, std::move(handler)) {
    settings.ip_address = "127.0.0.1";
    settings.port = std::to_string(peer.port());
    settings.baud_rate = 3125000;
  }
  void Connect(const std::string& model = "Zelto-KTC") {
    connection.InitKtcForSerial(std::stop_token(), settings, model);
  }
  FakePeer peer;
};

TEST(KtcForSerial, ConnectsTalksAndDisconnects) {
  KtcBench bench;
  bench.Connect();
  EXPECT_EQ(bench.report.Take(), (Lines{"start info", "INFO Lidar connected", "connected"}));
  const auto requests = bench.peer.Requests();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].cmd, 0xFF);
  EXPECT_EQ(requests[0].payload, (Bytes{0, 1, 0x39, 0x00, 0x2F, 0xAF, 0x08}));
  EXPECT_EQ(bench.connection.ktc_client()->SerialFastBaudRate(), 3125000U);
  // Checks and silent queries stay out of the byte log.
  bench.connection.set_log_bytes(true);
  Bytes reply;
  EXPECT_EQ(bench.connection.QueryKtc(8, {}, reply, true), 0);
  EXPECT_TRUE(bench.connection.CheckLidarConnection());
  EXPECT_EQ(bench.report.Take(), Lines{});
  EXPECT_EQ(bench.connection.QueryKtc(7, {}, reply, false), 3);
  EXPECT_EQ(bench.report.Take().size(), 2U);

  SmallSensorInfo info(bench.report, bench.connection, {[] { return false; }, [] {}, [] {}});
  info.SetModel("Marvo-KTC");
  info.Start();
  EXPECT_TRUE(Eventually([&] { return info.Info()[0].value == "S1"; }));
  bench.connection.Interrupt();
  EXPECT_LT(TimeOf([&] { info.Stop(); }), quarn::test::kAtOnce);
  bench.connection.Drop();
  EXPECT_FALSE(bench.connection.is_connected());
  EXPECT_FALSE(bench.connection.CheckLidarConnection());
  EXPECT_FALSE(bench.connection.Exchange());

  bench.report.Take();
  bench.connection.set_log_bytes(false);
  bench.Connect("Marvo-KTC");
  EXPECT_EQ(bench.report.Take(),
            (Lines{"start info", "INFO Lidar connected", "marvo versions", "connected"}));
}

TEST(KtcForSerial, SaysWhyItDoesNotConnect) {
  for (const auto& [port, reason] :
       {std::pair{"1", "TCP connection failed."}, {"abc", "invalid stoi argument"}}) {
    KtcBench bench;
    bench.settings.port = port;
    bench.Connect();
    EXPECT_EQ(bench.report.Take(), (Lines{"error: Connection Failed. Please check your network settings.",
                                          std::string("ERROR Connection Error: ") + reason}));
    EXPECT_FALSE(bench.connection.is_connected() || bench.connection.is_connecting());
  }
}

TEST(KtcForSerial, AStopEndsAnExchangeWithASilentSensor) {
  KtcBench bench([](const Request&) { return Answer{}; });
  std::stop_source stop;
  std::jthread worker(
      [&] { bench.connection.InitKtcForSerial(stop.get_token(), bench.settings, "Zelto-KTC"); });
  ASSERT_TRUE(Eventually([&] { return !bench.peer.Requests().empty(); }));
  const auto end = [&] {
    stop.request_stop();
    bench.connection.Interrupt();
    worker.join();
  };
  EXPECT_LT(TimeOf(end), quarn::test::kAtOnce);
}

}  // namespace
}  // namespace varkel
