#include "libquarn/KtcClient/src/tcp_ssl_client.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>

#include "libquarn/KtcClient/src/tcp_client.h"
#include "libquarn/KtcClient/src/tcp_open.h"
#include "tests/quarn/test_support.h"
#include "tests/quarn/tls_server.h"
#include "tests/support/certificates.h"

namespace quarn::lidar {
namespace {

using test::TlsServer;
using Lines = std::vector<std::string>;

const char kLoopback[] = "127.0.0.1";

// Null for an empty name, as transports take it.
const char* Path(const std::string& name) {
  static std::vector<std::unique_ptr<std::string>> kept;
  if (name.empty()) return nullptr;
  return kept.emplace_back(std::make_unique<std::string>(test::Certificate(name)))->c_str();
}

std::vector<std::string> ServerOptions(const std::string& cert = "server.pem", bool demand_identity = false,
                                       const std::string& version = "-no_tls1_1") {
  std::vector<std::string> options = {"-cert", Path(cert), "-key", Path("server.key"), version};
  if (demand_identity) {
    options.insert(options.end(), {"-CAfile", Path("ca.pem"), "-Verify", "1", "-verify_return_error"});
  }
  return options;
}

bool Connect(TcpSslClient& client, std::uint16_t port, const std::string& identity = "",
             const std::string& ca = "ca.pem") {
  const bool named = !identity.empty();
  return client.CreateContext(Path(named ? identity + ".pem" : ""), Path(named ? identity + ".key" : ""),
                              Path(ca)) &&
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

TEST(Tls, ContextTellsWhichFileIsWrong) {
  const std::string bad_cert = "8 load cert file failed,please check cert file path";
  const std::string bad_key = "8 load private key file failed,please check private key file path";
  const struct {
    std::string cert, key, ca, error;
  } cases[] = {
      {"", "", "", ""},
      {"client.pem", "client.key", "ca.pem", ""},
      {"", "", "server.key", "8 load ca failed,please check ca file path"},
      {"absent.pem", "client.key", "ca.pem", bad_cert},
      {"client.pem", "other.key", "ca.pem", bad_key},
      {"client.pem", "locked.key", "ca.pem", bad_key},
      {"client.pem", "other-kind.key", "ca.pem", "8 check private key failed"},
  };
  for (const auto& c : cases) {
    const test::LogLines log;
    const TlsContext context = InitSslClient(Path(c.cert), Path(c.key), Path(c.ca));
    EXPECT_EQ(context != nullptr, c.error.empty()) << c.cert << " " << c.key << " " << c.ca;
    Lines expected;
    if (!c.ca.empty()) expected.push_back("2 ca path: " + std::string(Path(c.ca)));
    if (!c.cert.empty() && !c.key.empty()) {
      expected.push_back("2 cert path: " + std::string(Path(c.cert)) + ",\nprivate_key path: " + Path(c.key));
    }
    if (!c.error.empty()) expected.push_back(c.error);
    EXPECT_EQ(log.All(), expected);
  }
}

TEST(Tls, MeetsPeersGoodAndBad) {
  const std::string success = "2 TcpSslClient::Open() success!";
  const std::string refused = "8 connect ssl failed";
  const std::string unverified = "8 verify ssl failed";
  const struct {
    std::string what, server, identity, ca, with_tls12, with_tls13;
    bool demands_identity, exchanges;
  } cases[] = {
      {"good peer", "server.pem", "client", "ca.pem", success, success, true, true},
      {"peer that asks for nothing", "server.pem", "", "ca.pem", success, success, false, true},
      {"wrong authority", "server.pem", "client", "other-ca.pem", refused, refused, true, false},
      {"wrong one, no identity", "server.pem", "", "other-ca.pem", unverified, unverified, false, false},
      {"no authority", "server.pem", "", "", unverified, unverified, false, false},
      {"expired", "expired.pem", "client", "ca.pem", refused, refused, true, false},
      {"expired, no identity", "expired.pem", "", "ca.pem", unverified, unverified, false, false},
      // The newer handshake ends before the peer has looked for the client's certificate.
      {"no client certificate", "server.pem", "", "ca.pem", refused, success, true, false},
  };
  for (const std::string version : {"-tls1_2", "-tls1_3"}) {
    for (const auto& c : cases) {
      SCOPED_TRACE(c.what + " " + version);
      TlsServer server(ServerOptions(c.server, c.demands_identity, version));
      ASSERT_NE(server.port(), 0);
      TcpSslClient client;
      const std::string& result = version == "-tls1_2" ? c.with_tls12 : c.with_tls13;
      const test::LogLines log;
      EXPECT_EQ(Connect(client, server.port(), c.identity, c.ca), result == success);
      EXPECT_EQ(log.All().back(), result);
      EXPECT_EQ(client.IsOpened(), result == success);
      if (result == success) {
        Send(client, "abc\n");
        EXPECT_EQ(Receive(client, 4), c.exchanges ? "cba\n" : "failed with -1");
        EXPECT_EQ(log.Has("8 ssl receive failed"), !c.exchanges);
      }
    }
  }
}

TEST(Tls, ReceivesExactlyWhatIsAskedOrFails) {
  TlsServer server(ServerOptions());
  TcpSslClient client;
  ASSERT_TRUE(Connect(client, server.port()));
  EXPECT_EQ(Send(client, "abcdef\n"), 7);
  std::array<std::uint8_t, 4> untouched{9, 9, 9, 9};
  EXPECT_EQ(client.Receive(untouched.data(), 4, kReceiveWithoutWaiting), -1);
  EXPECT_EQ(untouched, (std::array<std::uint8_t, 4>{9, 9, 9, 9}));
  EXPECT_EQ(Receive(client, 2), "fe");
  Send(client, "123\n");
  EXPECT_EQ(Receive(client, 9), "dcba\n321\n");  // both answers in one receive

  const test::LogLines log;
  EXPECT_TRUE(client.SetReceiveTimeout(500));
  Send(client, "456\n");
  EXPECT_EQ(Receive(client, 60), "failed with -1");
  EXPECT_EQ(Send(client, std::string(40000, 'x')), 40000);  // several records
  client.Close();
  EXPECT_FALSE(client.IsOpened() || client.SetReceiveTimeout(10));
  EXPECT_EQ(client.SetTimeout(10, 10), -1);
  EXPECT_EQ(log.All(), (Lines{"8 ssl receive failed", "4 TcpClient not open", "4 TcpClient not open"}));
}

TEST(Tls, CloseTellsThePeer) {
  TlsServer server(ServerOptions());
  TcpSslClient client;
  ASSERT_TRUE(Connect(client, server.port()));
  client.Close();
  EXPECT_TRUE(server.Says("CONNECTION CLOSED"));
}

// A send fails with a line then, and no signal ends the program.
TEST(Tls, SurvivesAPeerThatEndsWithoutAWord) {
  for (const std::string version : {"-tls1_2", "-tls1_3"}) {
    std::optional<TlsServer> server(std::in_place, ServerOptions("server.pem", false, version));
    TcpSslClient client;
    ASSERT_TRUE(Connect(client, server->port()));
    Send(client, "before\n");
    EXPECT_EQ(Receive(client, 7), "erofeb\n");
    server.reset();
    const test::LogLines log;
    EXPECT_EQ(Receive(client, 6), "failed with -1");
    EXPECT_TRUE(log.Has("8 ssl receive failed"));
    EXPECT_TRUE(test::Eventually([&] { return Send(client, "more\n") == -1; }));
    EXPECT_TRUE(log.All().back().starts_with("8 Send errno ")) << log.All().back();
    EXPECT_EQ(Receive(client, 1), "failed with -1");
  }
}

TEST(Tls, OpensLeaveAPeerThatAnswers) {
  for (const bool plain : {false, true}) {
    const auto peer = platform::TcpListener::Listen(kLoopback, 0);
    const std::string port = std::to_string(peer->port());
    const test::LogLines log;
    TcpSslClient client;
    EXPECT_FALSE(plain ? client.Open(kLoopback, peer->port(), false, nullptr, nullptr, nullptr)
                       : client.TryOpen(0, kLoopback, peer->port(), false, nullptr, nullptr, nullptr, 1));
    EXPECT_EQ(log.All(), plain ? (Lines{"2 Open() IP 127.0.0.1 port " + port, "2 ip:127.0.0.1 port:" + port,
                                        "8 Connect to Server Failed!~!~"})
                               : Lines{"8 Connect to Server Failed!~!~"});
    EXPECT_FALSE(client.IsOpened());
    const platform::SocketHandle connection = peer->Accept(5000);
    std::array<std::uint8_t, 1> byte{};
    EXPECT_EQ(platform::ReceiveBytes(connection, byte, 0), 0);  // closed, and nothing was sent
    platform::CloseSocket(connection);
    EXPECT_EQ(Send(client, "x"), -1);  // tries the open once more
    EXPECT_EQ(log.All().back(), "8 Connect to Server Failed!~!~");
  }
}

TEST(Tls, OpensTellWhyTheyFail) {
  const test::SilentAddress silent;
  const std::string no_session = "8 connect ssl failed";
  const std::string no_ca = "8 load ca failed,please check ca file path";
  const std::string refused = "8 connect errno:" + std::to_string(test::kConnectionRefused);
  const struct {
    std::string ip;
    std::uint16_t port;
    std::string ca, of_try, of_open;  // lines; a system refuses a connection at once or later
  } cases[] = {{"1.2.3", 80, "", "8 tcp_try_open inet_pton error:1.2.3", "8 tcp_open inet_pton error:1.2.3"},
               {kLoopback, test::ClosedPort(), "", "", refused + ", Connection refused"},
               {kLoopback, 80, "absent.pem", no_ca, "8 create SSL_CTX failed"},
               {kLoopback, silent.port(), "", no_session, ""}};
  for (const auto& c : cases) {
    TcpSslClient client;
    const test::LogLines log;
    EXPECT_FALSE(client.TryOpen(0, c.ip, c.port, false, nullptr, nullptr, Path(c.ca), 1));
    EXPECT_TRUE(c.of_try.empty() || log.Has(c.of_try)) << testing::PrintToString(log.All());
    if (c.of_open.empty()) continue;
    EXPECT_FALSE(client.Open(c.ip, c.port, false, nullptr, nullptr, Path(c.ca)));
    EXPECT_TRUE(log.Has(c.of_open)) << testing::PrintToString(log.All());
  }
}

TEST(Tls, InterruptEndsWhatRunsAndWhatComesLater) {
  const test::SilentAddress silent;
  const auto mute = platform::TcpListener::Listen(kLoopback, 0);
  TlsServer server(ServerOptions());
  const std::function<void(TcpSslClient&)> blocking[] = {
      [&](TcpSslClient& client) {
        EXPECT_FALSE(client.TryOpen(0, kLoopback, silent.port(), false, nullptr, nullptr, nullptr, 60));
      },
      [&](TcpSslClient& client) { EXPECT_FALSE(Connect(client, mute->port())); },  // in the handshake
      [&](TcpSslClient& client) {
        if (Connect(client, server.port())) {
          EXPECT_EQ(Receive(client, 1), "failed with -1");
        }
      },
  };
  for (const auto& block : blocking) {
    TcpSslClient client;
    test::ExpectEndsAtOnce([&] { block(client); }, [&] { client.Interrupt(); });
    EXPECT_EQ(Send(client, "x"), -1);
    client.Close();
    EXPECT_FALSE(Connect(client, server.port()));
  }
}

}  // namespace
}  // namespace quarn::lidar
