#include "libquarn/KtcClient/src/tcp_client.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/quarn/fake_peer.h"
#include "tests/quarn/test_support.h"

namespace quarn::lidar {
namespace {

using test::Answer;
using test::Bytes;
using test::FakePeer;
using test::kLoopback;
using test::Request;

bool TryOpen(TcpClient& client, std::uint16_t port, std::uint16_t local_port = 0,
             std::uint32_t timeout_s = 1) {
  return client.TryOpen(local_port, kLoopback, port, false, nullptr, nullptr, nullptr, timeout_s);
}

bool Open(TcpClient& client, std::uint16_t port, const std::string& ip = kLoopback) {
  return client.Open(ip, port, false, nullptr, nullptr, nullptr);
}

// A request's header, which the peer answers.
int SendRequest(TcpClient& client) {
  const Bytes frame = FakePeer::Reply(1, 7, {});
  return client.Send(frame.data(), 8, 0);
}

TEST(TcpClient, OpensOnceAndReconnectsOnSend) {
  const auto taken = platform::TcpListener::Listen("0.0.0.0", 0);
  for (const bool plain : {false, true}) {
    FakePeer peer(1, FakePeer::Echo);
    TcpClient client;
    // A local port that is taken is replaced.
    EXPECT_TRUE(plain ? Open(client, peer.port()) : TryOpen(client, peer.port(), taken->port()));
    EXPECT_TRUE(TryOpen(client, peer.port()) && Open(client, peer.port()));
    EXPECT_EQ(client.SetTimeout(5000, 5000), 0);
    EXPECT_EQ(SendRequest(client), 8);
    Bytes reply(64);
    EXPECT_EQ(client.Receive(reply.data(), 64, 0), 8);
    EXPECT_EQ(peer.connections(), 1);
    client.Close();
    EXPECT_FALSE(client.IsOpened() || client.SetReceiveTimeout(10));
    EXPECT_EQ(client.SetTimeout(10, 10), -1);
    EXPECT_EQ(SendRequest(client), 8);
    EXPECT_TRUE(client.IsOpened());
  }
}

TEST(TcpClient, FailsToOpenInTime) {
  TcpClient client;
  EXPECT_FALSE(TryOpen(client, test::FreePort()));
  EXPECT_FALSE(Open(client, 80, "1.2.3") || Open(client, test::FreePort()));
  const test::SilentAddress silent;
  const auto elapsed = test::TimeOf([&] { EXPECT_FALSE(TryOpen(client, silent.port())); });
  EXPECT_GE(elapsed.count(), 990);
  EXPECT_LT(elapsed.count(), 5000);
  EXPECT_FALSE(client.IsOpened());
}

TEST(TcpClient, ReceiveReportsEndsAndNeverWaitsWith255) {
  FakePeer peer(1, [](const Request&) { return Answer{.bytes = {1, 2, 3}, .close = true}; });
  TcpClient client;
  ASSERT_TRUE(TryOpen(client, peer.port()));
  ASSERT_EQ(client.SetTimeout(30, 30), 0);
  Bytes buffer(16);
  EXPECT_EQ(client.Receive(buffer.data(), 16, 0), -1);
  client.SetTimeout(60000, 60000);
  EXPECT_LT(test::TimeOf([&] { EXPECT_EQ(client.Receive(buffer.data(), 16, kReceiveWithoutWaiting), -1); }),
            test::kAtOnce);
  SendRequest(client);
  EXPECT_EQ(client.Receive(buffer.data(), 2, 0), 2);  // blocking again
  EXPECT_EQ(client.Receive(buffer.data(), 16, kReceiveWithoutWaiting), 1);
  EXPECT_EQ(client.Receive(buffer.data(), 16, 0), 0);
}

TEST(TcpClient, InterruptEndsCurrentAndLaterOperations) {
  const test::SilentAddress silent;
  // A peer that accepts and never reads: the send blocks once both buffers are full.
  const auto mute = platform::TcpListener::Listen(kLoopback, 0);
  const std::function<void(TcpClient&)> blocking[] = {
      [&](TcpClient& client) { EXPECT_FALSE(TryOpen(client, silent.port(), 0, 60)); },
      [&](TcpClient& client) {
        std::uint8_t byte = 0;
        Open(client, mute->port());  // a busy machine may interrupt first
        EXPECT_EQ(client.Receive(&byte, 1, 0), -1);
      },
      [&](TcpClient& client) {
        const Bytes block(60000);
        Open(client, mute->port());
        while (client.Send(block.data(), 60000, 0) == 60000) {
        }
      }};
  for (const auto& block : blocking) {
    TcpClient client;
    test::ExpectEndsAtOnce([&] { block(client); }, [&] { client.Interrupt(); });
    std::uint8_t byte = 0;
    EXPECT_EQ(client.Send(&byte, 1, 0), -1);
    EXPECT_EQ(client.Receive(&byte, 1, 0), -1);
    client.Close();
    EXPECT_FALSE(TryOpen(client, mute->port()));
  }
}

}  // namespace
}  // namespace quarn::lidar
