#include "libquarn/KtcClient/src/ktc_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <future>
#include <stdexcept>

#include "tests/quarn/fake_peer.h"
#include "tests/quarn/test_support.h"

namespace quarn::lidar {
namespace {

using test::Answer;
using test::Bytes;
using test::FakePeer;
using test::Request;

constexpr std::uint32_t kTestTimeoutMs = 2000;

std::unique_ptr<KtcClient> MakeClient(std::uint16_t port, std::uint8_t version = 1,
                                      std::uint32_t timeout_ms = kTestTimeoutMs, float connect_s = 5,
                                      const std::string& ip = "127.0.0.1", std::uint32_t type = 0) {
  return std::make_unique<KtcClient>(ip, port, false, type, version, "", "", "", timeout_ms, timeout_ms,
                                     connect_s, std::uint16_t{0});
}

std::unique_ptr<KtcClient> Connect(const FakePeer& peer, std::uint8_t version = 1,
                                   std::uint32_t timeout_ms = kTestTimeoutMs) {
  auto client = MakeClient(peer.port(), version, timeout_ms);
  EXPECT_TRUE(test::Eventually([&] { return client->IsOpen(); }));
  return client;
}

Answer Echo(const Request& request) {
  return {.bytes = FakePeer::Reply(1, request.cmd, request.payload)};
}

Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

Bytes Cut(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

// What an exchange with command 0x31 gives when the peer answers with `answer`.
struct ExchangeCase {
  const char* name;
  std::uint8_t version;
  Answer answer;
  int ret;
  int last_return_code;  // of a failure
  Bytes with_header;
  Bytes without_header;
};

const Bytes kBefore = {0xEE, 0xEE};  // the result's contents before the exchange

std::vector<ExchangeCase> ExchangeCases() {
  const Bytes good = FakePeer::Reply(1, 0x31, {1, 2, 3});
  const Bytes good2 = FakePeer::Reply(2, 0x31, {1, 2, 3});
  const Bytes empty = FakePeer::Reply(1, 0x31, {});
  const Bytes empty2 = FakePeer::Reply(2, 0x31, {});
  const Bytes error = FakePeer::Reply(1, 0x31, {9, 9}, 5);
  const Bytes error2 = FakePeer::Reply(2, 0x31, {}, 5);
  const Bytes other = FakePeer::Reply(1, 0x32, {1});
  const Bytes other2 = FakePeer::Reply(2, 0x32, {1});
  Bytes lying = good;
  std::fill_n(lying.begin() + 4, 4, std::uint8_t{0xFF});
  const Bytes payload = {1, 2, 3};
  // Seven bytes of noise and the first identifier byte fill the first block.
  const Bytes noise_and_47 = {0, 1, 2, 3, 4, 5, 6};
  return {
      {"good", 1, {good}, 0, 0, good, payload},
      {"good, version 2", 2, {good2}, 0, 0, good2, payload},
      {"byte by byte", 1, {good, true}, 0, 0, good, payload},
      {"no payload", 1, {empty}, 0, 0, empty, kBefore},
      {"no payload, version 2", 2, {empty2}, 0, 0, empty2, kBefore},
      {"noise", 1, {Joined({{0x47, 0x47, 0x74 - 1}, good})}, 0, 0, good, payload},
      {"noise, version 2", 2, {Joined({{0x47, 0x74, 0x57}, good2})}, 0, 0, good2, payload},
      {"47 lost", 1, {Joined({noise_and_47, good})}, -1, -2, {}, kBefore},
      {"47 lost, then good", 1, {Joined({noise_and_47, empty, {0}, good})}, 0, 0, good, payload},
      {"silence", 1, {}, -1, -2, {}, kBefore},
      {"half a header", 1, {Cut(good, 5)}, -1, -2, Cut(good, 5), kBefore},
      {"error code", 1, {error}, -1, 5, Cut(error, 8), kBefore},
      {"error code, version 2", 2, {error2}, -1, 5, error2, kBefore},
      {"other command", 1, {other}, -1, 0, Cut(other, 8), kBefore},
      {"other command, version 2", 2, {other2}, -1, 0, Cut(other2, 12), kBefore},
      {"half a payload", 1, {Cut(good, 10)}, -1, -3, kBefore, kBefore},
      {"lying length", 1, {lying}, -1, -3, kBefore, kBefore},
      {"closed in the middle", 1, {Cut(good, 9), false, true}, -1, -3, kBefore, kBefore},
  };
}

void CheckExchange(const ExchangeCase& c, bool with_header) {
  SCOPED_TRACE(std::string(c.name) + (with_header ? ", with header" : ", without header"));
  FakePeer peer(c.version, [&](const Request&) { return c.answer; });
  const auto client = Connect(peer, c.version, 1000);
  std::vector<std::string> lines;
  client->SetLogCallback([&](const std::string& line) { lines.push_back(line); });
  Bytes result = kBefore;
  EXPECT_EQ(client->QueryCommand(Bytes{0xAB}, result, 0x31, with_header), c.ret);
  EXPECT_EQ(result, with_header ? c.with_header : c.without_header);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0], c.version == 1 ? "SEND: 47 74 31 00 00 00 00 01 ab "
                                     : "SEND: 57 75 01 31 00 00 00 00 00 00 00 01 ab ");
  if (c.ret != 0) {
    EXPECT_EQ(client->LastReturnCode(), c.last_return_code);
    EXPECT_EQ(lines[1], "RECV: ret_code is " + std::to_string(c.last_return_code));
  } else if (!with_header && result == Bytes{1, 2, 3}) {
    EXPECT_EQ(lines[1], "RECV: 01 02 03 ");
  }
}

// Side by side, since many of them wait for a time-out.
TEST(QueryCommand, Table) {
  const std::vector<ExchangeCase> cases = ExchangeCases();
  std::vector<std::future<void>> running;
  running.reserve(2 * cases.size());
  for (const ExchangeCase& c : cases) {
    running.push_back(std::async(std::launch::async, CheckExchange, std::cref(c), true));
    running.push_back(std::async(std::launch::async, CheckExchange, std::cref(c), false));
  }
}

TEST(QueryCommand, LogsFaultsInEachVersionsWords) {
  for (const std::uint8_t version : Bytes{1, 2}) {
    FakePeer peer(version, [&](const Request&) { return Answer{FakePeer::Reply(version, 0x32, {}, 5)}; });
    const auto client = Connect(peer, version);
    const test::LogLines log;
    Bytes result;
    EXPECT_EQ(client->QueryCommand({}, result, 0x31), -1);
    EXPECT_TRUE(log.Has(std::string("4 KtcClient::QueryCommand,") + (version == 1 ? " " : "") +
                        "RspCode invalid:5, return_cmd:50, cmd:49"))
        << testing::PrintToString(log.All());
    EXPECT_EQ(log.All().back().substr(0, 13), "1 exec time: ");
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

// A peer that sends without pause, from the start or from the first request on.
int ReturnCodeOfAFlood(bool from_the_start) {
  const auto listener = platform::TcpListener::Listen("127.0.0.1", 0);
  std::thread flood([&] {
    const platform::SocketHandle connection = listener->Accept(5000);
    const Bytes noise(4096, 0x66);
    Bytes request(64);
    int moved = from_the_start ? 1 : platform::ReceiveBytes(connection, request, 0);
    while (moved > 0) {
      moved = platform::SendBytes(connection, noise, 0);
    }
    platform::CloseSocket(connection);
  });
  auto client = MakeClient(listener->port());
  EXPECT_TRUE(test::Eventually([&] { return client->IsOpen(); }));
  Bytes result;
  EXPECT_EQ(client->QueryCommand({}, result, 0x31), -1);
  const int code = client->LastReturnCode();
  client.reset();
  flood.join();
  return code;
}

TEST(QueryCommand, EndsBeforeASensorThatSendsWithoutPause) {
  auto during = std::async(std::launch::async, ReturnCodeOfAFlood, false);
  EXPECT_EQ(ReturnCodeOfAFlood(true), KtcClient::kNotSent);
  EXPECT_EQ(during.get(), KtcClient::kNoHeader);
}

TEST(QueryCommand, TakesALargePayloadAndRefusesALargeRequest) {
  FakePeer peer(
      1, [](const Request& request) { return Answer{FakePeer::Reply(1, request.cmd, Bytes(200000, 0x5A))}; });
  const auto client = Connect(peer, 1, 5000);
  const test::LogLines log;
  Bytes result;
  EXPECT_EQ(client->QueryCommand({}, result, 0x31), 0);
  EXPECT_EQ(result, Bytes(200000, 0x5A));
  EXPECT_TRUE(log.Has("4 KtcClient::QueryCommand, warning, nPayLoadLen too large:200000"));
  EXPECT_EQ(client->QueryCommand(Bytes(65528), result, 0x31), -1);
  EXPECT_EQ(client->LastReturnCode(), KtcClient::kNotSent);
  EXPECT_TRUE(log.Has("4 send failure, 0."));
  EXPECT_EQ(peer.Requests().size(), 1U);
}

TEST(QueryCommand, LogLinesAreOnlyBuiltWhenWanted) {
  FakePeer peer(1, Echo);
  const auto client = Connect(peer);
  int lines = 0;
  bool wanted = false;
  client->SetLogCallback([&](const std::string&) { ++lines; }, [&] { return wanted; });
  Bytes result;
  EXPECT_EQ(client->QueryCommand({}, result, 1), 0);
  EXPECT_EQ(lines, 0);
  wanted = true;
  EXPECT_EQ(client->QueryCommand({}, result, 1), 0);
  EXPECT_EQ(lines, 2);
  client->SetLogCallback({});
  EXPECT_EQ(client->QueryCommand({}, result, 1), 0);
  EXPECT_EQ(lines, 2);
}

TEST(QueryCommand, ThreadsNeverMix) {
  FakePeer peer(1, Echo);
  const auto client = Connect(peer, 1, 5000);
  std::atomic<bool> done{false};
  std::atomic<int> lines{0};
  std::thread observer([&] {
    while (!done) {
      EXPECT_TRUE(client->IsOpen());
      EXPECT_EQ(client->LastReturnCode(), 0);
      client->SetLogCallback([&](const std::string&) { ++lines; });
      std::this_thread::yield();
    }
  });
  std::vector<std::thread> workers;
  for (const std::uint8_t cmd : Bytes{0x41, 0x42}) {
    workers.emplace_back([&client, cmd] {
      for (std::uint8_t i = 0; i < 25; ++i) {
        const Bytes payload(1U + i * 40U, static_cast<std::uint8_t>(cmd + i));
        Bytes result;
        ASSERT_EQ(client->QueryCommand(payload, result, cmd), 0);
        ASSERT_EQ(result, payload);
      }
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  done = true;
  observer.join();
  client->SetLogCallback({});
  EXPECT_GT(lines, 0);
}

TEST(KtcClient, ConnectsOnceTheAddressIsKnown) {
  FakePeer peer(1, Echo);
  const test::LogLines log;
  const auto client = MakeClient(peer.port(), 1, kTestTimeoutMs, -1, "");
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
  struct {
    std::string ip;
    std::uint32_t type;
    float connect_s;
    std::string last_line;
  } const cases[] = {
      {"", 0, 0, "4 ktc connect : get lidar ip timeout"},
      {"127.0.0.1", 0, 0, "4 ktc connect exit 2"},
      {"127.0.0.1", 1, 0, "4 ktc connect exit 2"},
      {"127.0.0.1", 7, -1, "4 ktc connect exit 2"},
  };
  for (const auto& c : cases) {
    const test::LogLines log;
    const auto client = MakeClient(silent.port(), 1, kTestTimeoutMs, c.connect_s, c.ip, c.type);
    EXPECT_TRUE(test::Eventually([&] { return log.Has(c.last_line); })) << c.last_line;
    EXPECT_FALSE(client->IsOpen());
  }
}

TEST(KtcClient, EndsAtOnceWhileItConnectsOrWaits) {
  const test::SilentAddress silent;
  for (const std::string ip : {"", "127.0.0.1"}) {
    const test::LogLines log;
    auto client = MakeClient(silent.port(), 1, kTestTimeoutMs, -1, ip);
    ASSERT_TRUE(test::Eventually([&] { return !log.All().empty(); }));
    EXPECT_LT(test::TimeOf([&] { client.reset(); }), test::kAtOnce) << ip;
    EXPECT_TRUE(log.Has(ip.empty() ? "4 ktc connect exit 1" : "4 ktc connect exit 2"));
  }
}

TEST(KtcClient, InterruptEndsAWaitingExchange) {
  FakePeer peer(1, [](const Request&) { return Answer{}; });
  const auto client = Connect(peer, 1, 60000);
  auto exchange = std::async(std::launch::async, [&] {
    Bytes result;
    return client->QueryCommand({}, result, 1);
  });
  ASSERT_TRUE(test::Eventually([&] { return !peer.Requests().empty(); }));
  EXPECT_LT(test::TimeOf([&] {
              client->Interrupt();
              exchange.wait();
            }),
            test::kAtOnce);
  EXPECT_EQ(exchange.get(), -1);
  Bytes result;
  EXPECT_LT(test::TimeOf([&] { EXPECT_EQ(client->QueryCommand({}, result, 1), -1); }), test::kAtOnce);
}

// The time-outs that hold after a transfer show in how long the client waits for a silent peer.
TEST(TransferFile, SendsNumberedPiecesAndRestoresTimeouts) {
  constexpr std::uint8_t kSilent = 0x77;
  constexpr std::uint32_t kShortTimeoutMs = 300;
  struct {
    std::string text;
    std::uint32_t fail_at;
    std::uint8_t cmd;
    Bytes prefix;
  } const cases[] = {
      {"0x0A", 0, 0x0A, {}},
      {"0x0A", 2, 0x0A, {}},
      {"A", 0, 0xFF, {0, 0, 0, 0x0A}},
      {"0x01020304", 1, 0xFF, {1, 2, 3, 4}},
  };
  const Bytes file(2049, 0x21);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text + " " + std::to_string(c.fail_at));
    std::atomic<std::uint32_t> progress{0};
    FakePeer peer(1, [&](const Request& request) {
      if (request.cmd == kSilent) {
        return Answer{};
      }
      return Answer{FakePeer::Reply(1, request.cmd, {}, progress == c.fail_at ? 6 : 0)};
    });
    const auto client = Connect(peer, 1, kShortTimeoutMs);
    std::string text = c.text;
    EXPECT_EQ(client->TransferFileByCmdText(file, text, progress), c.fail_at == 0 ? 0 : -1);
    EXPECT_EQ(text, "");
    EXPECT_EQ(progress, c.fail_at == 0 ? 3 : c.fail_at);
    std::vector<Bytes> frames;
    KtcParser(1).KtcFilestreamSend(file, c.cmd, frames);
    const auto requests = peer.Requests();
    ASSERT_EQ(requests.size(), progress);
    for (std::size_t i = 0; i < requests.size(); ++i) {
      EXPECT_EQ(requests[i].cmd, c.cmd);
      EXPECT_EQ(requests[i].payload, Joined({c.prefix, frames[i]}));
    }
    Bytes result;
    const auto waited = test::TimeOf([&] { EXPECT_EQ(client->QueryCommand({}, result, kSilent), -1); });
    EXPECT_GE(waited.count(), kShortTimeoutMs);
    EXPECT_LT(waited.count(), 5000);
  }
}

TEST(TransferFile, ThrowsOnATextThatIsNoCode) {
  FakePeer peer(1, Echo);
  const auto client = Connect(peer);
  std::atomic<std::uint32_t> progress{0};
  std::string no_number = "zz";
  std::string too_large = "0x80000000";
  EXPECT_THROW(client->TransferFileByCmdText(Bytes{1}, no_number, progress), std::invalid_argument);
  EXPECT_THROW(client->TransferFileByCmdText(Bytes{1}, too_large, progress), std::out_of_range);
  EXPECT_EQ(no_number, "zz");
  EXPECT_TRUE(peer.Requests().empty());
}

TEST(KtcClient, ReadsAndWritesFieldsOfView) {
  FakePeer peer(1, [](const Request& request) {
    const Bytes fov = {2, 0, 10, 0, 20, 0, 30, 0, 40};
    return Answer{FakePeer::Reply(1, request.cmd, request.cmd == 0x23 ? fov : Bytes{})};
  });
  const auto client = Connect(peer);
  FovAngles starts{7, 7, 7, 7, 7};
  FovAngles ends{8, 8, 8, 8, 8};
  int count = 0;
  EXPECT_EQ(client->QueryMultiFov(starts, ends, count), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(starts, (FovAngles{1, 3, 7, 7, 7}));
  EXPECT_EQ(ends, (FovAngles{2, 4, 8, 8, 8}));
  EXPECT_EQ(client->WriteChannelFov(1, starts), 0);
  EXPECT_EQ(peer.Requests().back().cmd, 0x22);
  EXPECT_EQ(peer.Requests().back().payload, (Bytes{1, 0, 10, 0, 30, 0, 70, 0, 70, 0, 70}));
}

}  // namespace
}  // namespace quarn::lidar
