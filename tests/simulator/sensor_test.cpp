#include <gtest/gtest.h>
#include <openssl/err.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "libquarn/KtcClient/src/tcp_open.h"
#include "libquarn/KtcClient/src/tcp_ssl_client.h"
#include "simulator/src/simulated_sensor.h"
#include "tests/quarn/fake_peer.h"
#include "tests/support/certificates.h"

namespace varkel::sim {
namespace {

using quarn::test::Bytes;
using quarn::test::Certificate;
using quarn::test::Eventually;

/// A small sensor's table in a file that goes with the object.
struct TestTable {
  TestTable() {
    std::ofstream(path, std::ios::binary)
        << "GroupID,Index,Get,Set,SetIndex,VarName,VarType,DefaultValue,VarLen,Coefficient,FunctionModule,"
           "TimerUpdate,GetCmdPayload,Permission,Options,Unit,OptionDescription,SetCoefficient\n"
           "1,1,0x31,,,Name,string,sensor,6,,,,\n"
           "1,2,0x31,0x41,1,Port,uint16,258,2,,,,\n"
           "4,1,,0x10,1,Restart,raw,,0,,1_1_1_6,,\n";
  }
  ~TestTable() { std::filesystem::remove(path); }

  const std::string path =
      testing::TempDir() + "sim_" + testing::UnitTest::GetInstance()->current_test_info()->name() + ".csv";
};

TEST(SimulatedSensor, RefusesClampsAndDrops) {
  const TestTable table;
  SimulatedSensor sensor({.table_path = table.path, .faults = {"0x41=error:7#1", "0x41=clamp:300"}});
  sensor.Start();
  const auto client = quarn::test::MakeClient(sensor.port(), 1, 400);
  ASSERT_TRUE(Eventually([&] { return client->IsOpen(); }));
  EXPECT_EQ(client->Query(Bytes{9, 9}, 0x41).error(), 7);
  EXPECT_EQ(sensor.ValueText("Port"), "258");
  EXPECT_TRUE(client->Query(Bytes{9, 9}, 0x41));
  EXPECT_EQ(sensor.ValueText("Port"), "300");
  sensor.AddFault("*=drop#2");
  EXPECT_TRUE(client->Query({}, 0x31) && client->Query({}, 0x31));
  EXPECT_TRUE(Eventually([&] { return sensor.connected_clients() == 0; }));
  EXPECT_FALSE(client->Query({}, 0x31));
}

// A reply that comes whole, and two connections that end, with a closing message and without. What is sent
// after that fails, and no signal ends the program.
TEST(SimulatedSensor, SurvivesFaultsAndEndsUnderTls) {
  const Bytes request = {0x47, 0x74, 0x31, 0, 0, 0, 0, 0};
  const Bytes reply = {0x47, 0x74, 0x31, 0, 0, 0, 0, 8, 's', 'e', 'n', 's', 'o', 'r', 1, 2};
  const Bytes restart = {0x47, 0x74, 0x10, 0, 0, 0, 0, 0};
  const struct {
    const char* rule;
    Bytes request, comes;
    bool ends, with_a_word;
  } kCases[] = {{"0x31=split:3", request, reply, false, false},
                {"0x31=close", request, {reply.begin(), reply.begin() + 8}, true, false},
                {"0x31=none", restart, restart, true, true}};
  const TestTable table;
  SimulatedSensor sensor({.table_path = table.path,
                          .tls = TlsOptions{Certificate("server.pem"), Certificate("server.key"), "", false},
                          .restart_time = std::chrono::milliseconds(0)});
  sensor.Start();
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.rule);
    quarn::lidar::TcpSslClient client;
    ASSERT_TRUE(client.CreateContext(nullptr, nullptr, Certificate("ca.pem").c_str()) &&
                client.StartSession(quarn::lidar::tcp_open("127.0.0.1", sensor.port())));
    const auto send = [&](const Bytes& bytes) { return client.Send(bytes.data(), 8, 0) == 8; };
    client.SetTimeout(10'000, 10'000);
    sensor.AddFault(c.rule);
    ASSERT_TRUE(send(c.request));
    Bytes bytes(c.comes.size());
    EXPECT_EQ(client.Receive(bytes.data(), static_cast<std::uint32_t>(bytes.size()), 0), bytes.size());
    EXPECT_EQ(bytes, c.comes);
    client.SetReceiveTimeout(c.ends ? 10'000 : 50);
    EXPECT_EQ(client.Receive(bytes.data(), 1, 0), -1) << "nothing follows";
    EXPECT_TRUE(!c.ends || (ERR_peek_error() == 0) == c.with_a_word);
    sensor.ClearFaults();
    int sends = 0;  // the first ones may still find room
    while (c.ends && send(request) && sends < 1000) ++sends;
    EXPECT_LT(sends, 1000);
  }
}

}  // namespace
}  // namespace varkel::sim
