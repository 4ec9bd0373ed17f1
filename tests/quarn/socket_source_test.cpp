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
using test::TakenPort;
using Lines = std::vector<std::string>;

const std::string kLoopback = "127.0.0.1";
constexpr int kSecond_us = 1'000'000;

/// Sends from the loopback interface, also to groups.
struct Sender {
  Sender(const std::string& ip, std::uint16_t port) {
    EXPECT_TRUE(source.Open());
    EXPECT_TRUE(source.SetClient(ip, port));
  }
  int Send(const Bytes& bytes) {
    return source.Send(bytes.data(), static_cast<std::uint16_t>(bytes.size()), 0);
  }
  SocketSource source{0, kLoopback, ""};
};

// The next datagram; a read that finds none yet is tried again, as the tool's readers do.
Bytes Next(SocketSource& source, UdpPacket& packet, std::uint16_t length = kMaxPacketSize) {
  int received = 0;
  for (int attempt = 0; attempt < 3 && received <= 0; ++attempt) {
    received = source.Receive(packet, length, 0, kSecond_us);
  }
  return {packet.data.begin(), packet.data.begin() + std::max(received, 0)};
}

// What is there already, without patience for more.
bool IsIdle(SocketSource& source) {
  UdpPacket packet;
  return source.Receive(packet, 10, 0, 0) <= 0 && source.Receive(packet, 10, 0, 0) <= 0;
}

TEST(SocketSource, IdleSourceFailsOnceAndThenWaits) {
  SocketSource source(FreePort(), kLoopback, "");
  ASSERT_TRUE(source.Open());
  UdpPacket packet;
  const test::LogLines log;
  EXPECT_LT(test::TimeOf([&] { EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, 60 * kSecond_us), -1); }),
            test::kAtOnce);
  EXPECT_FALSE(packet.timed_out);
  EXPECT_GE(test::TimeOf([&] { EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, 50'000), 0); }).count(),
            49);
  EXPECT_TRUE(packet.timed_out);
  EXPECT_TRUE(log.All().empty());
  EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, -1), -1);
  EXPECT_EQ(log.All(), Lines{"4 Select timeout error"});
}

TEST(SocketSource, DrainsAStreamWithoutWaiting) {
  const std::uint16_t port = FreePort();
  SocketSource source(port, kLoopback, "");
  ASSERT_TRUE(source.Open());
  UdpPacket packet;
  EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, 0), -1);  // now it waits
  Sender sender(kLoopback, port);
  for (const std::uint8_t i : Bytes{1, 2, 3}) EXPECT_EQ(sender.Send({i, i, 7}), 3);
  for (const std::uint8_t i : Bytes{1, 2, 3}) {
    // The first is found by waiting, the others without: a negative time would fail a wait.
    EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, i == 1 ? kSecond_us : -1), 3);
    EXPECT_EQ(packet.data[1], i);
    EXPECT_EQ(packet.sender_ip, std::bit_cast<std::uint32_t>(*ParseIpv4(kLoopback)));
    EXPECT_FALSE(packet.timed_out);
  }
  EXPECT_EQ(source.Receive(packet, kMaxPacketSize, 0, -1), -1);
  for (const std::uint16_t length : {std::uint16_t{10}, std::uint16_t{65535}}) {
    EXPECT_EQ(sender.Send(Bytes(9000, 0x5A)), 9000);
    EXPECT_EQ(Next(source, packet, length).size(), std::min<std::size_t>(length, kMaxPacketSize));
    EXPECT_TRUE(IsIdle(source));  // the rest is gone
  }
}

TEST(SocketSource, SendsOnceItKnowsWhereAndClosesWhenASendFails) {
  const std::uint16_t ports[] = {FreePort(), FreePort()};
  SocketSource first(ports[0], kLoopback, "");
  SocketSource second(ports[1], kLoopback, "");
  const Bytes bytes(65535, 42);  // larger than a datagram
  EXPECT_EQ(first.Send(bytes.data(), 1, 0), -1) << "closed";
  ASSERT_TRUE(first.Open() && second.Open());
  EXPECT_TRUE(first.SetClient(kLoopback, ports[1]));
  EXPECT_FALSE(first.SetClient("sensor", ports[1]));
  EXPECT_EQ(first.Send(bytes.data(), 1, 0), -1) << "a bad address leaves no destination";
  EXPECT_TRUE(first.SetClient(kLoopback, ports[1]));
  EXPECT_EQ(first.Send(bytes.data(), 1, 0), 1);
  UdpPacket packet;
  EXPECT_EQ(Next(second, packet), Bytes{42});
  EXPECT_EQ(packet.sender_port, ports[0]);
  EXPECT_EQ(first.Send(bytes.data(), 65535, 0), -1);
  EXPECT_FALSE(first.IsOpened());
  EXPECT_EQ(first.Receive(packet, kMaxPacketSize, 0, 0), -1);
  EXPECT_TRUE(first.IsOpened()) << "a receive opens again";
}

TEST(SocketSource, OpensUnlessItsPortIsTakenOrItsAddressIsWrong) {
  const TakenPort taken;
  const struct {
    std::string local, group;
    std::uint16_t port;
    bool opens;
  } kCases[] = {{kLoopback, "", taken.port(), false}, {"127.0.0", "", 0, false}, {"", "239.1.2", 0, true}};
  for (const auto& c : kCases) {
    const test::LogLines log;
    SocketSource source(c.port, c.local, c.group);
    EXPECT_EQ(source.Open(), c.opens);
    EXPECT_EQ(source.IsOpened(), c.opens);
    EXPECT_EQ(log.Has("8 Multicast IP error, set correct multicast ip address or keep it empty"), c.opens);
  }
}

TEST(SocketSource, ReceivesItsGroupAndNoOther) {
  SKIP_UNDER_WINE("no group reaches a socket with a local address");
  const std::uint16_t port = FreePort();
  const std::string groups[] = {"239.255.77.1", "239.255.77.2"};
  SocketSource first(port, kLoopback, groups[0]);
  SocketSource same(port, kLoopback, groups[0]);
  SocketSource other(port, kLoopback, groups[1]);
  const test::LogLines log;
  ASSERT_TRUE(first.Open());
  ASSERT_TRUE(same.Open()) << "several share a port";
  ASSERT_TRUE(other.Open());
  if (!log.Has("2 Recive data from multicast ip address " + groups[0])) {
    GTEST_SKIP() << "the loopback interface of this machine joins no multicast group";
  }
  Sender sender(groups[0], port);
  if (sender.Send({1, 2, 3}) != 3) {
    GTEST_SKIP() << "this machine sends no multicast datagrams over its loopback interface";
  }
  UdpPacket packet;
  EXPECT_EQ(Next(first, packet), (Bytes{1, 2, 3}));
  EXPECT_EQ(packet.sender_ip, std::bit_cast<std::uint32_t>(*ParseIpv4(kLoopback)));
  EXPECT_EQ(Next(same, packet), (Bytes{1, 2, 3}));
  EXPECT_TRUE(IsIdle(other));
}

}  // namespace
}  // namespace quarn::lidar
