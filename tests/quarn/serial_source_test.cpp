#include "libquarn/Source/src/serial_source.h"

#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#endif

#include <atomic>
#include <future>
#include <numeric>
#include <string>
#include <thread>

#include "libquarn/Source/src/serial_frame.h"
#include "tests/quarn/bytes.h"
#include "tests/quarn/test_support.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/wine.h"

namespace {
std::atomic<int> line_takes_ms{0};
}  // namespace

#ifndef _WIN32
// Replaces the C library's functions, to make opening a line and clearing its input slow.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == TCFLSH || request == TIOCEXCL) {
    std::this_thread::sleep_for(std::chrono::milliseconds(line_takes_ms));
  }
  return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}
#endif

namespace quarn::lidar {
namespace {

using platform::SerialPort;
using test::Bytes;
using test::PseudoTerminal;

constexpr int kPatienceUs = 10000000;

Bytes Reply(std::uint8_t number) {
  return EncodeReplyFrame(ReplyKind::kCommand, 2, Bytes{number}, 0);
}

/// The bytes received until there are `size` of them.
Bytes Collect(SerialSource& source, std::size_t size, bool data = false) {
  Bytes all;
  UdpPacket packet;
  while (all.size() < size) {
    const int received = data ? source.ReceiveData(packet, kMaxPacketSize, kPatienceUs)
                              : source.Receive(packet, kMaxPacketSize, 0, kPatienceUs);
    if (received <= 0) break;
    all.insert(all.end(), packet.data.begin(), packet.data.begin() + received);
  }
  return all;
}

TEST(SerialPort, TakesAnyRateUpToFiveMillionAndHasOneUser) {
  const PseudoTerminal line;
  for (const std::uint32_t rate : {9600U, 3000000U, 3125000U, 4999999U, 5000000U}) {
    if (kUnderWine && (rate == 3125000 || rate > 4000000)) continue;  // Wine sets only the usual rates
    const auto port = SerialPort::Open(line.name(), rate);
    ASSERT_TRUE(port) << rate;
    EXPECT_EQ(port->BaudRate(), rate);
    EXPECT_EQ(line.rate(), rate);
    EXPECT_TRUE(kUnderWine || !SerialPort::Open(line.name(), rate)) << "opened twice";
  }
  EXPECT_FALSE(SerialPort::Open(line.name(), 0));
  EXPECT_FALSE(SerialPort::Open("/dev/null", 9600) || SerialPort::Open("/dev/no-such-port", 9600));
}

TEST(SerialSource, TransfersEveryByteAndEndsAWriteThatIsNotRead) {
  const PseudoTerminal line;
  SerialSource source(line.name(), 9600, 115200);
  source.SetAutoReceive(false);
  ASSERT_TRUE(source.Open());
  Bytes all(256);
  std::iota(all.begin(), all.end(), std::uint8_t{0});
  EXPECT_EQ(source.Send(all.data(), 256, 0), 256);
  EXPECT_EQ(line.Read(256), all);
  ASSERT_TRUE(line.Write(all));
  EXPECT_EQ(Collect(source, 256), all);
  int sent = 256;
  for (int i = 0; i < 4000 && sent == 256; ++i) sent = source.Send(all.data(), 256, 0);
  EXPECT_EQ(sent, -1);
}

TEST(SerialSource, SeparatesRepliesFromData) {
  const Bytes text = {'$', 'L', 'D', 'C', 'M', 'x', '$', '$', 'L', 'D'};
  const Bytes firmware = EncodeReplyFrame(ReplyKind::kOta, 1, Bytes(255, 0x24), 0);
  const Bytes noise(40, 0xEE);
  Bytes garbled = Reply(3);
  std::fill_n(garbled.begin(), 3, std::uint8_t{0});
  const PseudoTerminal line;
  SerialSource source(line.name(), 9600, 115200);
  ASSERT_TRUE(source.Open());
  ASSERT_TRUE(line.Write(test::Joined({text, Reply(1), Reply(2), text, firmware, garbled, noise})));
  const Bytes replies = test::Joined({Reply(1), Reply(2), firmware, garbled});
  EXPECT_EQ(Collect(source, replies.size()), replies);
  const Bytes data = test::Joined({text, text, garbled, noise});
  EXPECT_EQ(Collect(source, data.size(), true), data);
}

TEST(SerialSource, UnpluggingAndCloseEndAReceiveAtOnce) {
  for (const auto& [automatic, pull] :
       {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
    PseudoTerminal line;
    SerialSource source(line.name(), 9600, 115200);
    source.SetAutoReceive(automatic);
    ASSERT_TRUE(source.Open());
    ASSERT_TRUE(line.Write(Bytes{'$', 'L', 'D', 'C', 'M', 'D', ',', 5}));  // in the middle of a reply
    EXPECT_EQ(Collect(source, 8).size(), 8U);
    auto receiving = std::async(std::launch::async, [&source] { return Collect(source, 1).size(); });
    pull ? line.Pull() : source.Close();
    EXPECT_EQ(receiving.wait_for(test::kAtOnce), std::future_status::ready);
    EXPECT_EQ(receiving.get(), 0U);
    EXPECT_FALSE(source.IsOpened());
  }
}

// Both are slow, so input is being cleared whenever the port changes: no open may find the port still in use
// or interfere with the clearing.
TEST(SerialSource, OpensWhileAnotherThreadClears) {
  const PseudoTerminal line;
  SerialSource source(line.name(), 9600, 115200);
  line_takes_ms = 2;
  std::atomic<bool> done{false};
  auto clearing = std::async(std::launch::async, [&] {
    while (!done) source.Clear(SerialSource::kClearAll);
  });
  for (int i = 0; i < 50; ++i) EXPECT_TRUE(source.Open());
  done = true;
  clearing.get();
  ASSERT_TRUE(line.Write(Reply(1)));
  EXPECT_EQ(Collect(source, Reply(1).size()), Reply(1));
}

TEST(PacketRing, DropsTheOldestAndExtendsTheLastPacket) {
  constexpr std::chrono::microseconds kNow{0};
  PacketRing ring(2);
  ring.Push(Bytes{1, 2, 3});
  ring.Push(Bytes{4, 5}, true);
  ring.Push(Bytes(3100, 9));  // three slots: only the last two are kept
  Bytes buffer(2000);
  EXPECT_EQ(ring.dropped(), 2U);
  EXPECT_EQ(ring.Take(buffer, kNow), 1500);
  EXPECT_EQ(ring.Take(std::span(buffer).first(60), kNow), 60);
  ring.Push(Bytes{7}, true);
  EXPECT_EQ(ring.Take(buffer, kNow), 41);
}

}  // namespace
}  // namespace quarn::lidar
