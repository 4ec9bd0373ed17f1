#include "simulator/src/datagram_stream.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <limits>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Source/src/socket_source.h"
#include "simulator/src/stream_tally.h"
#include "tests/quarn/test_support.h"
#include "tests/support/wine.h"

namespace varkel::sim {
namespace {

using quarn::lidar::SocketSource;
using quarn::test::TimeOf;

const char kLoopback[] = "127.0.0.1";

std::uint16_t FreePort() {
  quarn::platform::StartUpSockets();
  const quarn::platform::SocketHandle socket = quarn::platform::CreateUdpSocket();
  quarn::platform::BindDatagramPort(socket, "", 0, "");
  const std::uint16_t port = quarn::platform::LocalPort(socket);
  quarn::platform::CloseSocket(socket);
  quarn::platform::CleanUpSockets();
  return port;
}

class DatagramStreamTest : public testing::TestWithParam<const char*> {};

TEST_P(DatagramStreamTest, ArrivesWholeAndAtItsRate) {
  const std::string group = GetParam();
  if (!group.empty()) SKIP_UNDER_WINE("no group reaches a socket with a local address");
  constexpr std::uint64_t kCount = 300;
  constexpr double kRate = 1500;
  constexpr int kPatience_us = 500'000;
  const std::uint16_t port = FreePort();
  const quarn::test::LogLines log;
  SocketSource source(port, kLoopback, group);
  ASSERT_TRUE(source.Open());
  if (!group.empty() && !log.Has("2 Recive data from multicast ip address " + group)) {
    GTEST_SKIP() << "the loopback interface of this machine joins no multicast group";
  }
  StreamTally tally;
  std::unique_ptr<DatagramStream> stream;
  const auto elapsed = TimeOf([&] {
    stream = std::make_unique<DatagramStream>(StreamOptions{.address = group.empty() ? kLoopback : group,
                                                            .local = kLoopback,
                                                            .port = port,
                                                            .hops = 0,
                                                            .size = 1500,
                                                            .rate = kRate,
                                                            .count = kCount});
    quarn::lidar::UdpPacket packet;
    for (int pauses = 0; tally.last() < kCount && pauses < 20; pauses += packet.timed_out ? 1 : 0) {
      const int size = source.Receive(packet, quarn::lidar::kMaxPacketSize, 0, kPatience_us);
      if (size <= 0) continue;
      EXPECT_EQ(size, 1500);
      EXPECT_TRUE(tally.Count(std::span(packet.data).first(static_cast<std::size_t>(size))));
    }
  });
  EXPECT_TRUE(quarn::test::Eventually([&] { return stream->sent() == kCount; }));  // counted behind the send
  EXPECT_EQ(stream->refused(), 0U);
  EXPECT_EQ(tally.received(), kCount);
  EXPECT_EQ(tally.last(), kCount);
  EXPECT_EQ(tally.lost() + tally.disordered(), 0U);
  // No number goes out ahead of its moment, however busy the machine is.
  EXPECT_GE(elapsed.count(), static_cast<std::int64_t>(1000 * (kCount - 1) / kRate) - 1);
}

INSTANTIATE_TEST_SUITE_P(Roads, DatagramStreamTest, testing::Values("", "239.255.77.9"),
                         [](const auto& tested) { return *tested.param == '\0' ? "unicast" : "multicast"; });

TEST(DatagramStream, StopsAtOnceAtAnyRate) {
  const std::uint16_t port = FreePort();
  EXPECT_DOUBLE_EQ(RateOfMegabits(80, 1000), 10'000);
  for (const double rate : {RateOfMegabits(80, 1000), 0.0, kSlowestStream}) {
    std::unique_ptr<DatagramStream> stream;
    stream = std::make_unique<DatagramStream>(
        StreamOptions{.address = kLoopback, .port = port, .size = 1000, .rate = rate});
    const std::uint64_t expected = rate == kSlowestStream ? 1 : 2000;  // 10 000 a second or more
    EXPECT_TRUE(quarn::test::Eventually([&] { return stream->sent() + stream->refused() >= expected; }));
    EXPECT_LT(TimeOf([&] { stream.reset(); }), quarn::test::kAtOnce);
  }
}

TEST(DatagramStream, RefusesWhatItCanNotSend) {
  const double kNoNumber = std::numeric_limits<double>::quiet_NaN();
  const StreamOptions cases[] = {
      {.address = "sensor", .port = 1},
      {.address = kLoopback, .port = 0},
      {.address = kLoopback, .local = "127.0.0", .port = 1},
      {.address = kLoopback, .local = "192.0.2.1", .port = 1},
      {.address = kLoopback, .port = 1, .size = kSmallestStreamDatagram - 1},
      {.address = kLoopback, .port = 1, .size = kLargestStreamDatagram + 1},
      {.address = kLoopback, .port = 1, .rate = -1},
      {.address = kLoopback, .port = 1, .rate = kNoNumber},
  };
  for (const StreamOptions& options : cases) {
    EXPECT_THROW(DatagramStream{options}, std::runtime_error) << options.address << " " << options.local;
  }
}

TEST(StreamTally, CountsLossAndDisorder) {
  const struct {
    std::vector<std::uint64_t> numbers;
    std::uint64_t received, last, lost, disordered;
  } cases[] = {
      {{}, 0, 0, 0, 0},
      {{1, 2, 3}, 3, 3, 0, 0},
      {{5'000'000'000, 5'000'000'003}, 2, 5'000'000'003, 2, 0},
      {{1, 4, 3}, 3, 4, 1, 1},
      {{7, 6}, 2, 7, 0, 1},
      {{1, 1}, 2, 1, 0, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.numbers));
    StreamTally tally;
    for (const std::uint64_t number : c.numbers) {
      std::array<std::uint8_t, 9> datagram{};
      quarn::lidar::StoreBigEndian(datagram, 0, number);
      EXPECT_TRUE(tally.Count(datagram));
      EXPECT_FALSE(tally.Count(std::span(datagram).first(7)));
    }
    EXPECT_EQ(tally.received(), c.received);
    EXPECT_EQ(tally.last(), c.last);
    EXPECT_EQ(tally.lost(), c.lost);
    EXPECT_EQ(tally.disordered(), c.disordered);
  }
}

}  // namespace
}  // namespace varkel::sim
