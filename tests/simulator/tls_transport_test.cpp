#include <gtest/gtest.h>
#include <openssl/err.h>

#include <chrono>
#include <string>
#include <vector>

#include "libquarn/KtcClient/src/tcp_open.h"
#include "libquarn/KtcClient/src/tcp_ssl_client.h"
#include "simulator/src/reply_frame.h"
#include "simulator/src/simulated_sensor.h"
#include "tests/simulator/sensor_rig.h"
#include "tests/support/certificates.h"

namespace varkel::sim {
namespace {

const Bytes kRequest = {0x47, 0x74, 0x31, 0, 0, 0, 0, 0};
const Bytes kReply = {0x47, 0x74, 0x31, 0, 0, 0, 0, 8, 's', 'e', 'n', 's', 'o', 'r', 1, 2};

/// A client that has shaken hands; its exchanges are those of the tool's TLS transport.
class TlsClient {
 public:
  TlsClient(std::uint16_t port, const std::string& ca, const std::string& certificate = "",
            const std::string& key = "")
      : connected_(client_.CreateContext(certificate.c_str(), key.c_str(), ca.c_str()) &&
                   client_.StartSession(quarn::lidar::tcp_open("127.0.0.1", port)) &&
                   client_.SetTimeout(10'000, 10'000) == 0) {}

  bool Send(const Bytes& bytes) {
    return connected_ && client_.Send(bytes.data(), static_cast<std::uint16_t>(bytes.size()), 0) ==
                             static_cast<int>(bytes.size());
  }
  /// Empty when they do not come whole.
  Bytes Receive(std::size_t size) {
    Bytes bytes(size);
    const int received = client_.Receive(bytes.data(), static_cast<std::uint32_t>(size), 0);
    return received == static_cast<int>(size) ? bytes : Bytes();
  }
  Bytes Exchange() { return Send(kRequest) ? Receive(kReply.size()) : Bytes(); }
  /// What comes after everything that was expected: "more", "silence", "end" or, without a word, "cut".
  std::string WhatFollows(bool waits) {
    client_.SetReceiveTimeout(waits ? 50 : 10'000);
    const bool more = !Receive(1).empty();
    client_.SetReceiveTimeout(10'000);
    if (more || waits) return more ? "more" : "silence";
    return ERR_peek_error() == 0 ? "end" : "cut";
  }

 private:
  quarn::lidar::TcpSslClient client_;
  const bool connected_;
};

std::string Path(const std::string& name) {
  return name.empty() ? "" : quarn::test::Certificate(name);
}

SensorOptions Options(const TestTable& table) {
  return {.table_path = table.path(),
          .tls = TlsOptions{Path("server.pem"), Path("server.key"), "", false},
          .restart_time = std::chrono::milliseconds(0)};
}

// A reply that comes whole, and two connections that end, with a closing message and without. What is sent
// after that fails, and no signal ends the program.
TEST(TlsTransport, SurvivesFaultsAndEnds) {
  const TestTable table;
  const struct {
    std::string rule;
    Bytes request, comes;
    std::string then;
  } cases[] = {
      {"0x31=split:3", kRequest, kReply, "silence"},
      {"0x31=close", kRequest, {kReply.begin(), kReply.begin() + 8}, "cut"},
      {"0x31=none", {0x47, 0x74, 0x10, 0, 0, 0, 0, 0}, {0x47, 0x74, 0x10, 0, 0, 0, 0, 0}, "end"},
  };
  SimulatedSensor sensor(Options(table));
  sensor.Start();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rule);
    TlsClient client(sensor.port(), Path("ca.pem"));
    sensor.AddFault(c.rule);
    ASSERT_TRUE(client.Send(c.request));
    EXPECT_EQ(client.Receive(c.comes.size()), c.comes);
    EXPECT_EQ(client.WhatFollows(c.then == "silence"), c.then);
    sensor.ClearFaults();
    EXPECT_EQ(client.Exchange(), c.then == "silence" ? kReply : Bytes());
    if (c.then == "silence") continue;
    int sends = 0;  // the first ones may still find room
    while (client.Send(kRequest) && sends < 1000) ++sends;
    EXPECT_LT(sends, 1000);
  }
}

}  // namespace
}  // namespace varkel::sim
