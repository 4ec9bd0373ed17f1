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
  const std::string bad_key = "8 load private key file failed,please check private key file path";
  const struct {
    std::string cert, key, ca, error;
  } cases[] = {
      {"", "", "", ""},
      {"client.pem", "client.key", "ca.pem", ""},
      {"", "", "server.key", "8 load ca failed,please check ca file path"},
      {"absent.pem", "client.key", "ca.pem", "8 load cert file failed,please check cert file path"},
      {"client.pem", "locked.key", "ca.pem", bad_key},
      {"client.pem", "other-kind.key", "ca.pem", "8 check private key failed"},
  };
  for (const auto& c : cases) {
    const test::LogLines log;
    const TlsContext context = InitSslClient(Path(c.cert), Path(c.key), Path(c.ca));
    EXPECT_EQ(context != nullptr, c.error.empty()) << c.cert << " " << c.key << " " << c.ca;
    EXPECT_TRUE(c.error.empty() || log.Has(c.error)) << c.error;
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
  EXPECT_TRUE(client.SetReceiveTimeout(100));
  EXPECT_EQ(Receive(client, 60), "failed with -1");
  EXPECT_EQ(Send(client, std::string(40000, 'x')), 40000);  // several records
}

TEST(Tls, OpensLeaveAPeerThatAnswers) {
  for (const bool plain : {false, true}) {
    const auto peer = platform::TcpListener::Listen(kLoopback, 0);
    const test::LogLines log;
    TcpSslClient client;
    EXPECT_FALSE(plain ? client.Open(kLoopback, peer->port(), false, nullptr, nullptr, nullptr)
                       : client.TryOpen(0, kLoopback, peer->port(), false, nullptr, nullptr, nullptr, 1));
    EXPECT_EQ(log.All().back(), "8 Connect to Server Failed!~!~");
    EXPECT_FALSE(client.IsOpened());
    const platform::SocketHandle connection = peer->Accept(5000);
    std::array<std::uint8_t, 1> byte{};
    EXPECT_EQ(platform::ReceiveBytes(connection, byte, 0), 0);  // closed, and nothing was sent
    platform::CloseSocket(connection);
  }
  const test::LogLines log;
  EXPECT_FALSE(TcpSslClient().TryOpen(0, "1.2.3", 80, false, nullptr, nullptr, nullptr, 1));
  EXPECT_EQ(log.All(), (Lines{"8 tcp_try_open inet_pton error:1.2.3", "8 connect ssl failed"}));
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
