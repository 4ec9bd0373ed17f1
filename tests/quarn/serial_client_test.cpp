#include "libquarn/Source/src/serial_client.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>

#include "libquarn/Source/src/ktc_serial_client.h"
#include "libquarn/Source/src/serial_source.h"
#include "tests/quarn/fake_peer.h"
#include "tests/quarn/test_support.h"
#include "tests/support/protocol_page.h"
#include "tests/support/pseudo_terminal.h"

namespace quarn::lidar {
namespace {

using test::Bytes;
using test::PseudoTerminal;

constexpr std::uint32_t kPatienceMs = 10000;
constexpr std::uint32_t kShortMs = 30;

Bytes Reply(ReplyKind kind, std::uint8_t code, const Bytes& rest) {
  return EncodeReplyFrame(kind, code, rest, 77);
}

/// A client on two lines; the test plays the sensor.
struct Lines {
  Lines() {
    uart_source->SetReceiveType(SerialSource::kCommandType);
    uart_source->SetAutoReceive(false);
    EXPECT_TRUE(uart_source->Open());
    EXPECT_TRUE(rs485_source->Open());
  }

  std::future<ExchangeResult> Query(std::uint32_t timeout_ms = kPatienceMs) {
    return std::async(std::launch::async, [this, timeout_ms] {
      return client.QueryCommand(3, Bytes{11, 0}, timeout_ms);
    });
  }

  PseudoTerminal uart;
  PseudoTerminal rs485;
  std::shared_ptr<SerialSource> uart_source = std::make_shared<SerialSource>(uart.name(), 9600, 3125000);
  std::shared_ptr<SerialSource> rs485_source = std::make_shared<SerialSource>(rs485.name(), 115200, 3000000);
  SerialClient client{uart_source, rs485_source};
};

constexpr std::size_t kRequestSize = 21;  // code 3 with two payload bytes

TEST(SerialClient, TakesTheReplyOutOfThePointCloudEvenWithAGarbledTag) {
  Lines lines;
  Bytes reply = Reply(ReplyKind::kCommand, 3, {11, 0, 0});
  for (const std::uint8_t first : Bytes{'$', 0}) {
    // Unread bytes of an abandoned exchange are not a reply to this one.
    ASSERT_TRUE(lines.rs485.Write(Reply(ReplyKind::kCommand, 3, {9, 9, 9})));
    auto result = lines.Query();
    EXPECT_EQ(lines.uart.Read(kRequestSize).size(), kRequestSize);
    reply[0] = first;
    ASSERT_TRUE(lines.rs485.Write(Bytes(500, 0x5A)));
    for (const std::uint8_t byte : reply) ASSERT_TRUE(lines.rs485.Write(Bytes{byte}));
    ASSERT_TRUE(lines.rs485.Write(Bytes(500, 0x5A)));
    EXPECT_EQ(result.get(), (Bytes{3, 3, 11, 0, 0}));
  }
}

TEST(SerialClient, DistinguishesSilenceNonsenseAndABrokenLine) {
  Lines lines;
  EXPECT_EQ(lines.Query(kShortMs).get(), tl::unexpected(-2));
  Bytes reply = Reply(ReplyKind::kCommand, 3, {11, 0, 0});
  reply[10] ^= 1;
  auto wrong = lines.Query();
  lines.uart.Read(2 * kRequestSize);  // the previous one, too
  ASSERT_TRUE(lines.rs485.Write(reply));
  EXPECT_EQ(wrong.get(), tl::unexpected(-2));
  auto pulled = lines.Query();
  lines.uart.Read(kRequestSize);
  ASSERT_TRUE(lines.rs485.Write(Bytes(reply.begin(), reply.begin() + 12)));
  lines.rs485.Pull();
  EXPECT_EQ(pulled.wait_for(test::kAtOnce), std::future_status::ready);
  EXPECT_EQ(pulled.get(), tl::unexpected(-3));
  EXPECT_EQ(lines.Query().get(), tl::unexpected(-1));
}

TEST(SerialClient, ExchangesFirmwareFramesOnTheCommandLineAlone) {
  Lines lines;
  SerialClient client(lines.uart_source, nullptr);
  EXPECT_EQ(client.QueryCommand(2, {}, kShortMs), tl::unexpected(-1));
  EXPECT_FALSE(SerialClient(nullptr, lines.rs485_source).ExchangeOta(0, 0, {}, 1));
  const auto send = [&] {
    return std::async(std::launch::async, [&] { return client.ExchangeOta(1, 2, Bytes{1, 2, 3}, 2); });
  };
  const Bytes request = EncodeOtaFrame(2, 1, 2, Bytes{1, 2, 3});
  auto result = send();
  EXPECT_EQ(lines.uart.Read(request.size()), request);
  ASSERT_TRUE(lines.uart.Write(Reply(ReplyKind::kOta, 2, {0x00, 0x33})));
  const Exchanged<OtaReply> reply = result.get();
  EXPECT_TRUE(reply && reply->command == 2 && reply->status == 0x33);
  auto broken = send();
  lines.uart.Read(request.size());
  lines.uart.Pull();
  EXPECT_EQ(broken.wait_for(test::kAtOnce), std::future_status::ready) << "the half-minute wait ends";
  EXPECT_EQ(broken.get().error(), -3);
}

TEST(KtcSerialClient, CarriesFramesInsideKtc) {
  const auto rows = test::PageTable(QUARN_SERIAL_PAGE, "| Carried frame | KTC request (version 1) |", 1);
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(test::FakePeer::Reply(1, 0xFF, test::Joined({{0, 2}, test::FromHex(rows[0][0])})),
            test::FromHex(rows[0][1]));
  const Bytes good = Reply(ReplyKind::kCommand, 3, {11, 0, 0});
  const std::pair<Bytes, ExchangeResult> kCases[] = {
      {test::Joined({{0, 2}, good}), Bytes{3, 3, 11, 0, 0}},
      {test::Joined({{0, 1}, good}), tl::unexpected(-2)},
      {test::Joined({{0, 2, 0}, good}), tl::unexpected(-2)},  // noise before the reply
      {{}, tl::unexpected(-2)}};
  for (const auto& [payload, result] : kCases) {
    test::FakePeer peer(1, [&answer = payload](const test::Request& request) {
      return test::Answer{test::FakePeer::Reply(1, request.cmd, answer)};
    });
    EXPECT_EQ(KtcSerialClient(test::Connect(peer)).QueryCommand(3, Bytes{11, 0}, kPatienceMs), result);
    const test::Request sent = peer.Requests().front();
    EXPECT_EQ(sent.cmd, 0xFF);
    EXPECT_EQ((Bytes{sent.payload.begin(), sent.payload.begin() + 13}),
              test::FromHex("00 02 24 4c 44 43 4d 44 2c 03 03 0b 00"));
  }
}

}  // namespace
}  // namespace quarn::lidar
