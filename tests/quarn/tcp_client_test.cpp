#include "libquarn/KtcClient/src/tcp_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <future>

#include "tests/quarn/fake_peer.h"
#include "tests/quarn/test_support.h"

namespace quarn::lidar {
namespace {

using test::Answer;
using test::Bytes;
using test::FakePeer;
using test::Request;

const std::string kLoopback = "127.0.0.1";

Answer Echo(const Request& request) {
  return {.bytes = FakePeer::Reply(1, request.cmd, request.payload)};
}

bool TryOpen(TcpClient& client, std::uint16_t port, std::uint16_t local_port = 0) {
  return client.TryOpen(local_port, kLoopback, port, false, nullptr, nullptr, nullptr, 1);
}

bool Open(TcpClient& client, const std::string& ip, std::uint16_t port) {
  return client.Open(ip, port, false, nullptr, nullptr, nullptr);
}

// A port on which nobody listens.
std::uint16_t ClosedPort() {
  return platform::TcpListener::Listen(kLoopback, 0)->port();
}

TEST(TcpClient, OpensOnceAndExchanges) {
  FakePeer peer(1, Echo);
  const test::LogLines log;
  for (const bool plain : {false, true}) {
    TcpClient client;
    EXPECT_TRUE(plain ? Open(client, kLoopback, peer.port()) : TryOpen(client, peer.port()));
    EXPECT_TRUE(client.IsOpened());
    EXPECT_TRUE(TryOpen(client, peer.port()));
    EXPECT_TRUE(Open(client, kLoopback, peer.port()));
    EXPECT_EQ(client.SetTimeout(5000, 5000), 0);
    const Bytes frame = FakePeer::Reply(1, 7, {});
    EXPECT_EQ(client.Send(frame.data(), static_cast<std::uint16_t>(frame.size()), 0), 8);
    Bytes reply(64);
    EXPECT_EQ(client.Receive(reply.data(), 64, 0), 8);
    client.Close();
    EXPECT_FALSE(client.IsOpened());
    EXPECT_EQ(peer.connections(), plain ? 2 : 1);
  }
  const std::string port = std::to_string(peer.port());
  EXPECT_EQ(log.All(), (std::vector<std::string>{"2 TryOpen succeed, IP 127.0.0.1 port " + port,
                                                 "2 Open() IP 127.0.0.1 port " + port,
                                                 "2  succeed, IP 127.0.0.1 port " + port}));
}

TEST(TcpClient, ClosedTransportReconnectsOnSendAndRefusesSettings) {
  FakePeer peer(1, Echo);
  TcpClient client;
  ASSERT_TRUE(TryOpen(client, peer.port()));
  client.Close();
  {
    const test::LogLines log;
    EXPECT_FALSE(client.SetReceiveTimeout(10));
    EXPECT_EQ(client.SetTimeout(10, 10), -1);
    client.SetReceiveBufferSize(1);
    EXPECT_EQ(log.All(), std::vector<std::string>(3, "4 TcpClient not open"));
  }
  const Bytes frame = FakePeer::Reply(1, 7, {});
  EXPECT_EQ(client.Send(frame.data(), 8, 0), 8);
  EXPECT_TRUE(client.IsOpened());
  EXPECT_TRUE(client.SetReceiveTimeout(5000));
}

TEST(TcpClient, TellsWhyItCannotOpen) {
  struct {
    std::string ip;
    std::uint16_t port;
    std::string try_line, open_line;
  } const cases[] = {
      {"1.2.3", 80, "8 TryOpen inet_pton error:1.2.3", "8 Open inet_pton error:1.2.3"},
      {kLoopback, ClosedPort(), "", "8 connect failed " + std::to_string(test::kConnectionRefused)},
  };
  for (const auto& c : cases) {
    TcpClient client;
    const test::LogLines log;
    EXPECT_FALSE(client.TryOpen(0, c.ip, c.port, false, nullptr, nullptr, nullptr, 1));
    EXPECT_EQ(log.All(), c.try_line.empty() ? std::vector<std::string>{} : std::vector{c.try_line});
    EXPECT_FALSE(Open(client, c.ip, c.port));
    EXPECT_TRUE(log.Has(c.open_line)) << testing::PrintToString(log.All());
    EXPECT_FALSE(client.IsOpened());
    std::uint8_t byte = 0;
    EXPECT_EQ(client.Send(&byte, 1, 0), -1);
    EXPECT_EQ(client.Receive(&byte, 1, 0), -1);
  }
}

TEST(TcpClient, TakenLocalPortIsReplaced) {
  FakePeer peer(1, Echo);
  const auto taken = platform::TcpListener::Listen("0.0.0.0", 0);
  const test::LogLines log;
  TcpClient client;
  EXPECT_TRUE(TryOpen(client, peer.port(), taken->port()));
  EXPECT_TRUE(log.Has("8 Failed to bind local port, system will auto assign one"));
}

// The receive buffers of all sockets of this process, the client's among them.
std::vector<std::uint32_t> ReceiveBuffers() {
  std::vector<std::uint32_t> sizes;
  for (platform::SocketHandle handle = 0; handle < 1024; ++handle) {
    sizes.push_back(platform::ReceiveBufferSize(handle).value_or(0));
  }
  return sizes;
}

TEST(TcpClient, ReceiveBufferGrowsAndNeverShrinks) {
  FakePeer peer(1, Echo);
  TcpClient client;
  ASSERT_TRUE(TryOpen(client, peer.port()));
  ASSERT_TRUE(test::Eventually([&] { return peer.connections() == 1; }));
  const auto before = ReceiveBuffers();
  client.SetReceiveBufferSize(1024);
  EXPECT_EQ(ReceiveBuffers(), before);
  client.SetReceiveBufferSize(*std::max_element(before.begin(), before.end()) + 4096);
  EXPECT_GT(ReceiveBuffers(), before);
}

TEST(TcpClient, ReceiveReportsEndsAndNeverWaitsWith255) {
  FakePeer peer(1, [](const Request&) { return Answer{.bytes = {1, 2, 3}, .close = true}; });
  TcpClient client;
  ASSERT_TRUE(TryOpen(client, peer.port()));
  ASSERT_EQ(client.SetTimeout(30, 30), 0);
  const test::LogLines log;
  Bytes buffer(16);
  EXPECT_EQ(client.Receive(buffer.data(), 16, 0), -1);
  EXPECT_TRUE(log.All().empty());  // a time-out is no fault
  client.SetTimeout(60000, 60000);
  EXPECT_LT(test::TimeOf([&] { EXPECT_EQ(client.Receive(buffer.data(), 16, kReceiveWithoutWaiting), -1); }),
            test::kAtOnce);
  const Bytes request = FakePeer::Reply(1, 7, {});
  client.Send(request.data(), 8, 0);
  EXPECT_EQ(client.Receive(buffer.data(), 2, 0), 2);  // blocking again
  EXPECT_EQ(client.Receive(buffer.data(), 16, kReceiveWithoutWaiting), 1);
  EXPECT_EQ(client.Receive(buffer.data(), 16, 0), 0);
  EXPECT_TRUE(log.Has("8 Connection closed by peer, recv returned 0"));
}

TEST(TcpClient, SilentAddressTimesOutWithoutALine) {
  const test::SilentAddress address;
  const test::LogLines log;
  TcpClient client;
  const auto elapsed = test::TimeOf([&] { EXPECT_FALSE(TryOpen(client, address.port())); });
  EXPECT_GE(elapsed.count(), 990);
  EXPECT_LT(elapsed.count(), 5000);
  EXPECT_TRUE(log.All().empty()) << testing::PrintToString(log.All());
}

TEST(TcpClient, InterruptEndsWhatRunsAndWhatComesLater) {
  const test::SilentAddress silent;
  FakePeer mute(1, [](const Request&) { return Answer{}; });
  struct {
    bool opened;
    std::function<void(TcpClient&)> block;
  } const cases[] = {
      {false,
       [&](TcpClient& client) {
         EXPECT_FALSE(client.TryOpen(0, kLoopback, silent.port(), false, nullptr, nullptr, nullptr, 60));
       }},
      {false, [&](TcpClient& client) { EXPECT_FALSE(Open(client, kLoopback, silent.port())); }},
      {true,
       [&](TcpClient& client) {
         std::uint8_t byte = 0;
         EXPECT_EQ(client.Receive(&byte, 1, 0), -1);
       }},
  };
  for (const auto& c : cases) {
    TcpClient client;
    if (c.opened) {
      ASSERT_TRUE(Open(client, kLoopback, mute.port()));
    }
    auto running = std::async(std::launch::async, [&] { c.block(client); });
    EXPECT_EQ(running.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
    EXPECT_LT(test::TimeOf([&] {
                client.Interrupt();
                running.wait();
              }),
              test::kAtOnce);
    std::uint8_t byte = 0;
    EXPECT_EQ(client.Send(&byte, 1, 0), -1);
    EXPECT_EQ(client.Receive(&byte, 1, 0), -1);
    client.Close();
    EXPECT_FALSE(TryOpen(client, mute.port()));
    EXPECT_FALSE(client.IsOpened());
  }
}

// A peer that accepts and never reads: the send blocks once both buffers are full.
TEST(TcpClient, InterruptEndsABlockedSend) {
  const auto listener = platform::TcpListener::Listen(kLoopback, 0);
  TcpClient client;
  ASSERT_TRUE(Open(client, kLoopback, listener->port()));
  const platform::SocketHandle unread = listener->Accept(5000);
  std::atomic<std::size_t> blocks{0};
  auto running = std::async(std::launch::async, [&] {
    const Bytes block(60000);
    while (client.Send(block.data(), 60000, 0) == 60000) {
      ++blocks;
    }
  });
  std::size_t seen = 0;
  do {
    seen = blocks;
  } while (running.wait_for(std::chrono::milliseconds(100)) == std::future_status::timeout && seen != blocks);
  EXPECT_LT(test::TimeOf([&] {
              client.Interrupt();
              running.wait();
            }),
            test::kAtOnce);
  platform::CloseSocket(unread);
}

}  // namespace
}  // namespace quarn::lidar
