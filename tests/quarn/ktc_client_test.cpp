#include "libquarn/KtcClient/src/ktc_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <stdexcept>

#include "libquarn/Platform/src/hex_text.h"
#include "tests/quarn/fake_peer.h"
#include "tests/quarn/test_support.h"

namespace quarn::lidar {
namespace {

using test::Answer;
using test::Bytes;
using test::Connect;
using test::FakePeer;
using test::Joined;
using test::MakeClient;
using test::Request;

Bytes Cut(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

// What an exchange with command 0x31 gives when the peer answers with `answer`.
struct ExchangeCase {
  const char* name;
  Answer answer;
  int ret;
  int last_return_code;  // of a failure
  Bytes with_header;
  Bytes without_header;
};

const Bytes kBefore = {0xEE, 0xEE};  // the result's contents before the exchange
const Bytes kPayload = {1, 2, 3};

std::vector<ExchangeCase> ExchangeCases(std::uint8_t version) {
  const Bytes good = FakePeer::Reply(version, 0x31, kPayload);
  const Bytes empty = FakePeer::Reply(version, 0x31, {});
  const Bytes error = FakePeer::Reply(version, 0x31, {9, 9}, 5);
  const Bytes other = FakePeer::Reply(version, 0x32, {1});
  const std::size_t header = empty.size();
  Bytes lying = good;
  std::fill_n(lying.begin() + static_cast<std::ptrdiff_t>(header) - 4, 4, std::uint8_t{0xFF});
  const Bytes almost = {good[0], good[0], static_cast<std::uint8_t>(good[1] - 1)};
  const Bytes noise(header - 1);  // with the first identifier byte it fills the first block
  return {
      {"good", {good}, 0, 0, good, kPayload},
      {"byte by byte", {good, true}, 0, 0, good, kPayload},
      {"no payload", {empty}, 0, 0, empty, kBefore},
      {"noise", {Joined({almost, good})}, 0, 0, good, kPayload},
      {"identifier lost", {Joined({noise, good})}, -1, -2, {}, kBefore},
      {"identifier lost, then good", {Joined({noise, empty, {0}, good})}, 0, 0, good, kPayload},
      {"silence", {}, -1, -2, {}, kBefore},
      {"half a header", {Cut(good, 5)}, -1, -2, Cut(good, 5), kBefore},
      {"error code", {error}, -1, 5, Cut(error, header), kBefore},
      {"other command", {other}, -1, 0, Cut(other, header), kBefore},
      {"half a payload", {Cut(good, header + 2)}, -1, -3, kBefore, kBefore},
      {"lying length", {lying}, -1, -3, kBefore, kBefore},
      {"closed in the middle", {Cut(good, header + 1), false, true}, -1, -3, kBefore, kBefore},
  };
}

void CheckExchange(std::uint8_t version, const ExchangeCase& c, bool with_header) {
  SCOPED_TRACE(c.name + std::string(with_header ? ", with header" : "") + ", version " +
               std::to_string(version));
  FakePeer peer(version, [&](const Request&) { return c.answer; });
  const auto client = Connect(peer, version, 1000);
  std::string log;
  client->SetLogCallback([&](const std::string& line) { log += line + "\n"; });
  Bytes result = kBefore;
  EXPECT_EQ(client->QueryCommand(Bytes{0xAB}, result, 0x31, with_header), c.ret);
  EXPECT_EQ(result, with_header ? c.with_header : c.without_header);
  const std::string code = std::to_string(c.last_return_code);
  EXPECT_TRUE(c.ret == 0 || client->LastReturnCode() == c.last_return_code) << client->LastReturnCode();
  EXPECT_EQ(log, (version == 1 ? "SEND: 47 74 31 00 00 00 00 01 ab \nRECV: "
                               : "SEND: 57 75 01 31 00 00 00 00 00 00 00 01 ab \nRECV: ") +
                     (c.ret == 0 ? HexLine(result) : "ret_code is " + code) + "\n");
}

// Side by side, since many of them wait for a time-out.
TEST(QueryCommand, Table) {
  std::vector<std::future<void>> running;
  for (const std::uint8_t version : Bytes{1, 2}) {
    for (const ExchangeCase& c : ExchangeCases(version)) {
      running.push_back(std::async(std::launch::async, [version, c] {
        CheckExchange(version, c, true);
        CheckExchange(version, c, false);
      }));
    }
  }
}

TEST(QueryCommand, DrainsWhatAnEarlierExchangeLeft) {
  const Bytes stale = FakePeer::Reply(1, 0x31, Bytes(4000, 0x66));
  FakePeer peer(1, [&](const Request& request) {
    return Answer{Joined({FakePeer::Reply(1, 0x31, request.payload), stale})};
  });
  const auto client = Connect(peer);
  for (const std::uint8_t mark : Bytes{1, 2}) {
    Bytes result;
    EXPECT_EQ(client->QueryCommand(Bytes{mark}, result, 0x31), 0);
    EXPECT_EQ(result, Bytes{mark});
  }
}

TEST(QueryCommand, EndsOnASensorThatSendsWithoutPause) {
  const auto listener = platform::TcpListener::Listen("127.0.0.1", 0);
  const auto flood = std::async(std::launch::async, [&] {
    const platform::SocketHandle connection = listener->Accept(5000);
    const Bytes noise(1 << 18, 0x66);  // faster than the client reads
    while (platform::SendBytes(connection, noise, 0) > 0) continue;
    platform::CloseSocket(connection);
  });
  const auto client = MakeClient(listener->port(), 1, 2000, 5, "127.0.0.1", 0,
                                 {.longest_noise = std::chrono::milliseconds(300)});
  EXPECT_TRUE(test::Eventually([&] { return client->IsOpen(); }));
  // A busy machine may interrupt the flood for long enough that the request goes out.
  const KtcClient::Result reply = client->Query({}, 0x31);
  EXPECT_TRUE(!reply && (reply.error() == KtcClient::kNotSent || reply.error() == KtcClient::kNoHeader));
}

TEST(QueryCommand, TakesALargePayloadAndRefusesALargeRequest) {
  const Bytes large(200000, 0x5A);
  FakePeer peer(1, [&](const Request& request) { return Answer{FakePeer::Reply(1, request.cmd, large)}; });
  const auto client = Connect(peer, 1, 5000);
  const test::LogLines log;
  Bytes result;
  EXPECT_EQ(client->QueryCommand({}, result, 0x31), 0);
  EXPECT_EQ(result, large);
  EXPECT_TRUE(log.Has("4 KtcClient::QueryCommand, warning, nPayLoadLen too large:200000"));
  EXPECT_EQ(client->QueryCommand(Bytes(65600), result, 0x31), -1);
  EXPECT_EQ(client->LastReturnCode(), KtcClient::kNotSent);
  EXPECT_TRUE(log.Has("4 send failure, 0."));
  EXPECT_EQ(peer.Requests().size(), 1U);
}

TEST(QueryCommand, EndsWhatIsTooSlowOrTooLargeOrCannotBeKept) {
  const struct {
    KtcLimits limits;
    std::size_t announced, sent;
    std::string line;
  } kCases[] = {
      {{.least_bytes_time = std::chrono::milliseconds(0)}, 200, 100, "comes too slowly, 100 of 200 bytes."},
      {{.largest_payload = 1000}, 1001, 1001, "is too large, 1001 bytes."},
      {{.largest_payload = 1000}, 1000, 1000, ""}};
  for (const auto& c : kCases) {
    FakePeer peer(1, [&](const Request&) {
      return Answer{Cut(FakePeer::Reply(1, 0x31, Bytes(c.announced)), 8 + c.sent)};
    });
    const auto client = MakeClient(peer.port(), 1, 20000, 5, "127.0.0.1", 0, c.limits);
    ASSERT_TRUE(test::Eventually([&] { return client->IsOpen(); }));
    const test::LogLines log;
    const KtcClient::Result reply = client->Query({}, 0x31);
    EXPECT_EQ(reply ? 0 : reply.error(), c.line.empty() ? 0 : KtcClient::kNoPayload);
    EXPECT_EQ(reply ? reply->size() : 0, c.line.empty() ? c.sent : 0);
    EXPECT_EQ(log.Has("4 the sensor's reply " + c.line), !c.line.empty());
  }
  FakePeer peer(1, FakePeer::Echo);
  const auto client = Connect(peer);
  client->SetLogCallback([](const std::string&) { throw std::bad_alloc(); });
  EXPECT_EQ(client->Query({}, 0x31).error(), KtcClient::kNoPayload);
}

TEST(QueryCommand, ThreadsNeverMix) {
  FakePeer peer(1, FakePeer::Echo);
  const auto client = Connect(peer, 1, 5000);
  std::atomic<int> lines{0};
  const auto work = [&](std::uint8_t cmd) {
    for (std::uint8_t i = 0; i < 25; ++i) {
      client->SetLogCallback([&lines](const std::string&) { ++lines; });
      const Bytes payload(1U + i * 40U, static_cast<std::uint8_t>(cmd + i));
      Bytes result;
      ASSERT_EQ(client->QueryCommand(payload, result, cmd), 0);
      ASSERT_EQ(result, payload);
    }
  };
  auto other = std::async(std::launch::async, work, std::uint8_t{0x41});
  work(0x42);
  other.get();
  EXPECT_EQ(lines, 100);
}

TEST(KtcClient, ConnectsOnceTheAddressIsKnown) {
  FakePeer peer(1, FakePeer::Echo);
  const test::LogLines log;
  const auto client = MakeClient(peer.port(), 1, 2000, -1, "");
  ASSERT_TRUE(test::Eventually([&] {
    return log.Has("4 KtcClient::KtcClient() lidar_ip_ is empty, wait recv could point to get lidar ip");
  }));
  Bytes result;
  EXPECT_EQ(client->QueryCommand({}, result, 1), -1);
  EXPECT_EQ(client->LastReturnCode(), 0);
  EXPECT_TRUE(log.Has("8 Client is not open, cannot send command."));
  client->SetLidarIp("127.0.0.1");
  EXPECT_TRUE(test::Eventually([&] { return log.Has("2 ktc connect success"); }));
  EXPECT_TRUE(client->IsOpen());
  EXPECT_TRUE(log.Has("2 u32RecvTimeoutMs 2000"));
}

TEST(KtcClient, GivesUpWithAReason) {
  const test::SilentAddress silent;
  const struct {
    std::string ip;
    std::uint32_t type;
    std::string last_line;
  } kCases[] = {{"", 0, "4 ktc connect : get lidar ip timeout"},
                {"127.0.0.1", 0, "4 ktc connect exit 2"},
                {"127.0.0.1", 7, "4 ktc connect exit 2"}};
  for (const auto& c : kCases) {
    const test::LogLines log;
    const auto client = MakeClient(silent.port(), 1, 2000, 0, c.ip, c.type);
    EXPECT_TRUE(test::Eventually([&] { return log.Has(c.last_line); })) << c.last_line;
    EXPECT_FALSE(client->IsOpen());
  }
}

TEST(KtcClient, EndsAtOnceWhileItConnectsOrWaits) {
  const test::SilentAddress silent;
  for (const std::string ip : {"", "127.0.0.1"}) {
    const test::LogLines log;
    auto client = MakeClient(silent.port(), 1, 2000, -1, ip);
    ASSERT_TRUE(test::Eventually([&] { return !log.All().empty(); }));
    EXPECT_LT(test::TimeOf([&] { client.reset(); }), test::kAtOnce) << ip;
    EXPECT_TRUE(log.Has(ip.empty() ? "4 ktc connect exit 1" : "4 ktc connect exit 2"));
  }
}

// The time-outs that hold after a transfer show in how long the client waits for a silent peer.
TEST(TransferFile, SendsNumberedPiecesAndRestoresTimeouts) {
  constexpr std::uint8_t kSilent = 0x77;
  constexpr std::uint32_t kShortTimeoutMs = 300;
  const struct {
    std::string text;
    std::uint32_t fail_at;
    std::uint8_t cmd;
    Bytes prefix;
  } kCases[] = {{"0x0A", 2, 0x0A, {}}, {"A", 0, 0xFF, {0, 0, 0, 0x0A}}};
  const Bytes file(2049, 0x21);
  for (const auto& c : kCases) {
    std::atomic<std::uint32_t> progress{0};
    FakePeer peer(1, [&](const Request& request) {
      const std::uint8_t code = progress == c.fail_at ? 6 : 0;
      return request.cmd == kSilent ? Answer{} : Answer{FakePeer::Reply(1, request.cmd, {}, code)};
    });
    const auto client = Connect(peer, 1, kShortTimeoutMs);
    std::string text = c.text;
    EXPECT_EQ(client->TransferFileByCmdText(file, text, progress), c.fail_at == 0 ? 0 : -1);
    EXPECT_EQ(text, "");
    std::vector<Bytes> frames;
    KtcParser(1).KtcFilestreamSend(file, c.cmd, frames);
    const auto requests = peer.Requests();
    ASSERT_EQ(requests.size(), c.fail_at == 0 ? 3 : c.fail_at);
    EXPECT_EQ(progress, requests.size());
    for (std::size_t i = 0; i < requests.size(); ++i) {
      EXPECT_EQ(requests[i].cmd, c.cmd);
      EXPECT_EQ(requests[i].payload, Joined({c.prefix, frames[i]}));
    }
    Bytes result;
    const auto waited = test::TimeOf([&] { EXPECT_EQ(client->QueryCommand({}, result, kSilent), -1); });
    EXPECT_GE(waited.count(), kShortTimeoutMs);
    EXPECT_LT(waited.count(), 5000);
    EXPECT_THROW(client->TransferFileByCmdText(file, text = "zz", progress), std::invalid_argument);
    EXPECT_EQ(peer.Requests().size(), requests.size() + 1);
  }
}

}  // namespace
}  // namespace quarn::lidar
