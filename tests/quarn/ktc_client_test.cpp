#include "libquarn/KtcClient/src/ktc_client.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>

#include "tests/quarn/fake_peer.h"
#include "tests/quarn/test_support.h"

namespace quarn::lidar {
namespace {

using test::Answer;
using test::Bytes;
using test::Connect;
using test::FakePeer;
using test::Joined;
using test::kLoopback;
using test::MakeClient;
using test::Request;

Bytes Cut(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

// The outcome of an exchange with command 0x31 if the peer answers with `answer`.
struct ExchangeCase {
  const char* name;
  Answer answer;
  int ret, last_return_code;
  Bytes with_header, without_header;
};

const Bytes kBefore = {0xEE, 0xEE};  // the result's contents before the exchange
const Bytes kPayload = {1, 2, 3};

std::vector<ExchangeCase> ExchangeCases(std::uint8_t version) {
  const Bytes good = FakePeer::Reply(version, 0x31, kPayload);
  const Bytes empty = FakePeer::Reply(version, 0x31, {});
  const Bytes error = FakePeer::Reply(version, 0x31, {9, 9}, 5);
  const Bytes other = FakePeer::Reply(version, 0x32, {1});
  const std::size_t header = empty.size();
  const Bytes almost = {good[0], good[0], static_cast<std::uint8_t>(good[1] - 1)};
  const Bytes noise(header - 1);  // fills the first block together with the first identifier byte
  return {
      {"good", {good}, 0, 0, good, kPayload},
      {"no payload", {empty}, 0, 0, empty, kBefore},
      {"noise", {Joined({almost, good})}, 0, 0, good, kPayload},
      {"identifier lost", {Joined({noise, empty, {0}, good})}, 0, 0, good, kPayload},
      {"silence", {}, -1, -2, {}, kBefore},
      {"error code", {error}, -1, 5, Cut(error, header), kBefore},
      {"other command", {other}, -1, 0, Cut(other, header), kBefore},
      {"half a payload", {Cut(good, header + 2)}, -1, -3, kBefore, kBefore},
  };
}

void CheckExchange(std::uint8_t version, const ExchangeCase& c, bool with_header) {
  SCOPED_TRACE(c.name + std::string(with_header ? ", with header" : "") + ", version " +
               std::to_string(version));
  FakePeer peer(version, [&](const Request&) { return c.answer; });
  const auto client = Connect(peer, version, 1000);
  Bytes result = kBefore;
  EXPECT_EQ(client->QueryCommand(Bytes{0xAB}, result, 0x31, with_header), c.ret);
  EXPECT_EQ(result, with_header ? c.with_header : c.without_header);
  EXPECT_EQ(client->LastReturnCode(), c.last_return_code);
}

// In parallel, because many of them wait for a time-out.
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
  const auto listener = platform::TcpListener::Listen(kLoopback, 0);
  const auto flood = std::async(std::launch::async, [&] {
    const platform::SocketHandle connection = listener->Accept(5000);
    const Bytes noise(1 << 18, 0x66);  // faster than the client reads
    while (platform::SendBytes(connection, noise, 0) > 0) continue;
    platform::CloseSocket(connection);
  });
  const auto client = MakeClient(listener->port(), 1, 2000, 5, kLoopback, 0,
                                 {.longest_noise = std::chrono::milliseconds(300)});
  EXPECT_TRUE(test::Eventually([&] { return client->IsOpen(); }));
  // A busy machine may interrupt the flood for long enough that the request is sent.
  const ExchangeResult reply = client->Query({}, 0x31);
  EXPECT_TRUE(!reply && (reply.error() == KtcClient::kNotSent || reply.error() == KtcClient::kNoHeader));
}

TEST(QueryCommand, ReportsRepliesTooSlowOrTooLargeOrThatCannotBeStored) {
  const struct {
    KtcLimits limits;
    std::size_t announced, sent;
    int result;
  } kCases[] = {{{}, 200000, 200000, 0},
                {{.least_bytes_time = std::chrono::milliseconds(0)}, 200, 100, KtcClient::kNoPayload},
                {{.largest_payload = 1000}, 1001, 1001, KtcClient::kNoPayload},
                {{.largest_payload = 1000}, 1000, 1000, 0}};
  for (const auto& c : kCases) {
    const Bytes reply = FakePeer::Reply(1, 0x31, test::Counting(c.announced));
    FakePeer peer(1, [&](const Request&) { return Answer{Cut(reply, 8 + c.sent)}; });
    const auto client = Connect(peer, 1, 20000, c.limits);
    ExchangeResult result;
    EXPECT_LT(test::TimeOf([&] { result = client->Query({}, 0x31); }), test::kPatience);
    EXPECT_EQ(result ? 0 : result.error(), c.result);
    EXPECT_TRUE(!result || *result == Bytes(reply.begin() + 8, reply.end()));
  }
  FakePeer peer(1, FakePeer::Echo);
  const auto client = Connect(peer);
  EXPECT_EQ(client->Query(Bytes(65600), 0x31).error(), KtcClient::kNotSent);
  EXPECT_TRUE(peer.Requests().empty());
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
  const auto client = MakeClient(peer.port(), 1, 2000, -1, "");
  Bytes result;
  EXPECT_EQ(client->QueryCommand({}, result, 1), -1);
  EXPECT_EQ(client->LastReturnCode(), 0);
  client->SetLidarIp("127.0.0.1");
  EXPECT_TRUE(test::Eventually([&] { return client->IsOpen(); }));
}

TEST(KtcClient, GivesUpAfterItsTimeOut) {
  const test::SilentAddress silent;
  const struct {
    const char* ip;
    const char* reason;
  } kCases[] = {{"", "4 ktc connect : get lidar ip timeout"}, {"127.0.0.1", "4 ktc connect exit 2"}};
  for (const auto& one : kCases) {
    const test::LogLines log;
    const auto client = MakeClient(silent.port(), 1, 2000, 0, one.ip);
    EXPECT_TRUE(test::Eventually([&] { return log.Has(one.reason); })) << one.reason;
    EXPECT_FALSE(client->IsOpen());
  }
}

// How long the client waits for a silent peer shows which time-outs apply after a transfer.
TEST(TransferFile, SendsNumberedPiecesAndRestoresTimeouts) {
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
      return request.payload.empty() ? Answer{} : Answer{FakePeer::Reply(1, request.cmd, {}, code)};
    });
    const auto client = Connect(peer, 1, kShortTimeoutMs);
    std::string text = c.text;
    EXPECT_EQ(client->TransferFileByCmdText(file, text, progress), c.fail_at == 0 ? 0 : -1);
    EXPECT_EQ(text, "");
    std::vector<Bytes> frames;
    KtcParser(1).KtcFilestreamSend(file, c.cmd, frames);
    const auto requests = peer.Requests();
    ASSERT_EQ(requests.size(), c.fail_at == 0 ? 3 : c.fail_at);
    for (std::size_t i = 0; i < requests.size(); ++i) {
      EXPECT_EQ(requests[i].cmd, c.cmd);
      EXPECT_EQ(requests[i].payload, Joined({c.prefix, frames[i]}));
    }
    const auto waited = test::TimeOf([&] { EXPECT_FALSE(client->Query({}, 0x77)); });
    EXPECT_GE(waited.count(), kShortTimeoutMs);
    EXPECT_LT(waited.count(), 5000);
    EXPECT_THROW(client->TransferFileByCmdText(file, text = "zz", progress), std::invalid_argument);
  }
}

}  // namespace
}  // namespace quarn::lidar
