#include "simulator/src/datagram_stream.h"

#include <gtest/gtest.h>

#include <memory>
#include <span>

#include "libquarn/Source/src/socket_source.h"
#include "simulator/src/stream_tally.h"
#include "tests/quarn/test_support.h"

namespace varkel::sim {
namespace {

using quarn::lidar::SocketSource;
using quarn::test::TimeOf;

const char kLoopback[] = "127.0.0.1";

TEST(DatagramStream, ArrivesWholeAtItsRateAndStopsAtOnce) {
  constexpr std::uint64_t kCount = 300;
  constexpr double kRate = 1500;
  const std::uint16_t port = quarn::test::FreePort();
  SocketSource source(port, kLoopback, "");
  ASSERT_TRUE(source.Open());
  StreamTally tally;
  StreamOptions options{.address = kLoopback, .port = port, .size = 1500, .rate = kRate, .count = kCount};
  std::unique_ptr<DatagramStream> stream;
  const auto elapsed = TimeOf([&] {
    stream = std::make_unique<DatagramStream>(options);
    quarn::lidar::UdpPacket packet;
    for (int pauses = 0; tally.last() < kCount && pauses < 20; pauses += packet.timed_out ? 1 : 0) {
      const int size = source.Receive(packet, quarn::lidar::kMaxPacketSize, 0, 500'000);
      if (size <= 0) continue;
      EXPECT_EQ(size, 1500);
      EXPECT_TRUE(tally.Count(std::span(packet.data).first(static_cast<std::size_t>(size))));
    }
  });
  EXPECT_TRUE(quarn::test::Eventually([&] { return stream->sent() == kCount; }));  // counted behind the send
  EXPECT_EQ(stream->refused() + tally.lost() + tally.disordered(), 0U);
  EXPECT_EQ(tally.received(), kCount);
  // No number goes out ahead of its moment, however busy the machine is.
  EXPECT_GE(elapsed.count(), static_cast<std::int64_t>(1000 * (kCount - 1) / kRate) - 1);

  options.count = 0;
  options.rate = kSlowestStream;
  stream = std::make_unique<DatagramStream>(options);
  EXPECT_LT(TimeOf([&] { stream.reset(); }), quarn::test::kAtOnce);
}

}  // namespace
}  // namespace varkel::sim
