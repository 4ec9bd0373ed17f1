#include <gtest/gtest.h>

#include "libquarn/KtcClient/src/tcp_client.h"
#include "libquarn/KtcClient/src/tcp_open.h"
#include "libquarn/KtcClient/src/tcp_ssl_client.h"
#include "tests/quarn/test_support.h"
#include "tests/quarn/tls_server.h"

namespace quarn::lidar {
namespace {

using test::kLoopback;
using test::TlsServer;

std::string Path(const std::string& name) {
  return name.empty() ? "" : VARKEL_CERTIFICATES + name;
}

std::vector<std::string> ServerOptions(const std::string& version = "-tls1_3",
                                       const std::string& cert = "server.pem", bool demand_identity = false) {
  std::vector<std::string> options = {"-cert", Path(cert), "-key", Path("server.key"), version};
  if (demand_identity) {
    options.insert(options.end(), {"-CAfile", Path("ca.pem"), "-Verify", "1", "-verify_return_error"});
  }
  return options;
}

bool Connect(TcpSslClient& client, std::uint16_t port, const std::string& cert = "",
             const std::string& key = "", const std::string& ca = "ca.pem") {
  return client.CreateContext(Path(cert).c_str(), Path(key).c_str(), Path(ca).c_str()) &&
         client.StartSession(tcp_open(kLoopback, port)) && client.SetTimeout(10000, 10000) == 0;
}

int Send(TcpSslClient& client, const std::string& text) {
  return client.Send(reinterpret_cast<const std::uint8_t*>(text.data()),
                     static_cast<std::uint16_t>(text.size()), 0);
}

std::string Receive(TcpSslClient& client, std::uint32_t size) {
  std::string text(size, '\0');
  const int received = client.Receive(reinterpret_cast<std::uint8_t*>(text.data()), size, 0);
  return received == static_cast<int>(size) ? text : "failed with " + std::to_string(received);
}

TEST(Tls, ChecksPeersGoodAndBad) {
  const struct {
    const char *what, *version, *server, *cert, *key, *ca;
    bool demands_identity, opens, exchanges;
  } kCases[] = {
      {"good peer", "-tls1_2", "server.pem", "client.pem", "client.key", "ca.pem", true, true, true},
      {"peer that asks for nothing", "-tls1_3", "server.pem", "", "", "ca.pem", false, true, true},
      {"wrong authority", "-tls1_3", "server.pem", "", "", "other-ca.pem", false, false, false},
      {"expired", "-tls1_3", "expired.pem", "client.pem", "client.key", "ca.pem", true, false, false},
      // The TLS 1.3 handshake ends before the peer has checked the client's certificate.
      {"no client certificate", "-tls1_3", "server.pem", "", "", "ca.pem", true, true, false},
      {"locked key", "-tls1_3", "server.pem", "client.pem", "locked.key", "ca.pem", false, false, false},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.what) + " " + c.version);
    TlsServer server(ServerOptions(c.version, c.server, c.demands_identity));
    ASSERT_NE(server.port(), 0);
    TcpSslClient client;
    EXPECT_EQ(Connect(client, server.port(), c.cert, c.key, c.ca), c.opens);
    EXPECT_EQ(client.IsOpened(), c.opens);
    if (c.opens) {
      Send(client, "abc\n");
      EXPECT_EQ(Receive(client, 4), c.exchanges ? "cba\n" : "failed with -1");
    }
  }
}

TEST(Tls, ReceivesExactlyTheRequestedSizeOrFails) {
  TlsServer server(ServerOptions());
  TcpSslClient client;
  ASSERT_TRUE(Connect(client, server.port()));
  EXPECT_EQ(Send(client, "abcdef\n"), 7);
  std::uint8_t byte = 9;
  EXPECT_EQ(client.Receive(&byte, 1, kReceiveWithoutWaiting), -1);
  EXPECT_EQ(byte, 9);
  EXPECT_EQ(Receive(client, 2), "fe");
  Send(client, "123\n");
  EXPECT_EQ(Receive(client, 9), "dcba\n321\n");  // both answers in a single receive
  EXPECT_TRUE(client.SetReceiveTimeout(100));
  EXPECT_EQ(Receive(client, 60), "failed with -1");
}

TEST(Tls, OpensLeaveAPeerThatAnswers) {
  const auto peer = platform::TcpListener::Listen(kLoopback, 0);
  const test::LogLines log;
  TcpSslClient client;
  EXPECT_FALSE(client.Open(kLoopback, peer->port(), false, nullptr, nullptr, nullptr));
  EXPECT_FALSE(client.TryOpen(0, kLoopback, peer->port(), false, nullptr, nullptr, nullptr, 1));
  EXPECT_EQ(log.All().back(), "8 Connect to Server Failed!~!~");
  for (const platform::SocketHandle connection : {peer->Accept(5000), peer->Accept(5000)}) {
    std::uint8_t byte = 0;
    EXPECT_EQ(platform::ReceiveBytes(connection, {&byte, 1}, 0), 0);  // closed, and nothing was sent
    platform::CloseSocket(connection);
  }
}

TEST(Tls, InterruptEndsAHandshakeAndLaterOperations) {
  const auto mute = platform::TcpListener::Listen(kLoopback, 0);
  TcpSslClient client;
  test::ExpectEndsAtOnce([&] { EXPECT_FALSE(Connect(client, mute->port())); }, [&] { client.Interrupt(); });
  EXPECT_EQ(Send(client, "x"), -1);
  client.Close();
  EXPECT_FALSE(Connect(client, mute->port()));
}

}  // namespace
}  // namespace quarn::lidar
