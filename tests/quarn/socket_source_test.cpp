#include "libquarn/Source/src/socket_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

#include "libquarn/Platform/src/ipv4.h"
#include "tests/quarn/bytes.h"
#include "tests/quarn/test_support.h"
#include "tests/support/wine.h"

namespace quarn::lidar {
namespace {

using test::Bytes;
using test::FreePort;
using test::kLoopback;

constexpr int kSecond_us = 1'000'000;

int Send(SocketSource& source, const Bytes& bytes) {
  return source.Send(bytes.data(), static_cast<std::uint16_t>(bytes.size()), 0);
}

// The next datagram; retries while there is none, as the tool's readers do.
Bytes Next(SocketSource& source, UdpPacket& packet) {
  int received = 0;
  for (int attempt = 0; attempt < 3 && received <= 0; ++attempt) {
    received = source.Receive(packet, kMaxPacketSize, 0, kSecond_us);
  }
  return {packet.data.begin(), packet.data.begin() + std::max(received, 0)};
}

// The datagrams that have already arrived.
bool IsIdle(SocketSource& source) {
  UdpPacket packet;
  return source.Receive(packet, 10, 0, 0) <= 0 && source.Receive(packet, 10, 0, 0) <= 0;
}

TEST(SocketSource, WaitsOnceIdleAndDrainsAStreamWithoutWaiting) {
  const std::uint16_t port = FreePort();
  SocketSource source(port, kLoopback, "");
  ASSERT_TRUE(source.Open());
  UdpPacket packet;
  EXPECT_LT(test::TimeOf([&] { EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, 60 * kSecond_us), -1); }),
            test::kAtOnce);
  EXPECT_FALSE(packet.timed_out);
  EXPECT_GE(test::TimeOf([&] { EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, 50'000), 0); }).count(),
            49);
  EXPECT_TRUE(packet.timed_out);
  SocketSource sender(0, kLoopback, "");
  ASSERT_TRUE(sender.Open() && sender.SetClient(kLoopback, port));
  for (const std::uint8_t i : Bytes{1, 2, 3}) EXPECT_EQ(Send(sender, {i, i, 7}), 3);
  for (const std::uint8_t i : Bytes{1, 2, 3}) {
    // Only the first one is waited for: with a negative time-out another wait would fail.
    EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, i == 1 ? kSecond_us : -1), 3);
    EXPECT_EQ(packet.data[1], i);
    EXPECT_EQ(packet.sender_ip, std::bit_cast<std::uint32_t>(*ParseIpv4(kLoopback)));
    EXPECT_TRUE(packet.sender_port != 0 && !packet.timed_out);
  }
  EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, -1), -1);
}

TEST(SocketSource, SendsOnceItHasADestinationAndClosesWhenASendFails) {
  SocketSource source(0, kLoopback, "");
  EXPECT_EQ(Send(source, {42}), -1) << "closed";
  ASSERT_TRUE(source.Open() && source.SetClient(kLoopback, FreePort()));
  EXPECT_FALSE(source.SetClient("sensor", 1));
  EXPECT_EQ(Send(source, {42}), -1) << "a bad address leaves no destination";
  EXPECT_TRUE(source.SetClient(kLoopback, FreePort()));
  EXPECT_EQ(Send(source, {42}), 1);
  EXPECT_EQ(Send(source, Bytes(65535)), -1) << "larger than a datagram";
  EXPECT_FALSE(source.IsOpened());
  UdpPacket packet;
  EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, 0), -1);
  EXPECT_TRUE(source.IsOpened()) << "a receive reopens it";
}

TEST(SocketSource, ReceivesOnlyItsGroup) {
  SKIP_UNDER_WINE("no group reaches a socket with a local address");
  const std::uint16_t port = FreePort();
  const std::string groups[] = {"239.255.77.1", "239.255.77.2"};
  SocketSource first(port, kLoopback, groups[0]);
  SocketSource other(port, kLoopback, groups[1]);
  const test::LogLines log;
  ASSERT_TRUE(first.Open() && other.Open()) << "several can share a port";
  SocketSource sender(0, kLoopback, "");
  ASSERT_TRUE(sender.Open() && sender.SetClient(groups[0], port));
  if (!log.Has("2 Recive data from multicast ip address " + groups[0]) || Send(sender, {1, 2, 3}) != 3) {
    GTEST_SKIP() << "the loopback interface of this machine joins no multicast group or sends to none";
  }
  UdpPacket packet;
  EXPECT_EQ(Next(first, packet), (Bytes{1, 2, 3}));
  EXPECT_TRUE(IsIdle(other));
}

}  // namespace
}  // namespace quarn::lidar
