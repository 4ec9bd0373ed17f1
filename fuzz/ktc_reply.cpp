// The client's KTC reply path: any bytes, split anywhere, with silences and broken lines in between.
//
// Input: options, command, then what the transport delivers: 0 is a silence, 255 a broken line, any other
// number a block of that many bytes. A silence ends what was on the line before the request.
#include <atomic>
#include <utility>

#include "fuzz/input.h"
#include "fuzz/scripted_transport.h"
#include "libquarn/Source/src/ktc_serial_client.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;

/// Plays the rest of the input as the line.
class Line {
 public:
  Line(fuzz::Input& input, bool sends) : input_(input) {
    fuzz::Script().send = [this, sends](Bytes frame) {
      delivered.clear();
      return static_cast<int>(frame.size()) - (sends ? 0 : 1);
    };
    fuzz::Script().receive = [this](std::span<std::uint8_t> buffer) { return Receive(buffer); };
  }
  ~Line() { fuzz::Script() = {}; }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  Vector delivered;  ///< since the last request

 private:
  int Receive(std::span<std::uint8_t> buffer) {
    if (block_.empty()) {
      const std::uint8_t size = input_.Byte();
      if (size == 0xFF) return -1;
      block_ = input_.Take(size);
    }
    const Bytes piece = block_.first(std::min(buffer.size(), block_.size()));
    std::copy(piece.begin(), piece.end(), buffer.begin());
    delivered.insert(delivered.end(), piece.begin(), piece.end());
    block_ = block_.subspan(piece.size());
    return static_cast<int>(piece.size());
  }

  fuzz::Input& input_;
  Bytes block_;
};

void Query(std::uint8_t version, std::uint8_t cmd, bool sends, bool with_header, fuzz::Input& input) {
  const quarn::lidar::KtcParser parser(version);
  const auto& layout = parser.parser()->layout();
  const Vector before = {0xAA, 0xBB};
  Vector result = before;
  const Line line(input, sends);
  const bool good = fuzz::OpenClient(version)->QueryCommand(before, result, cmd, with_header) == 0;
  const Bytes all = line.delivered;
  if (good) {
    Require(sends, "nothing succeeds without a request");
    Require((!with_header && result == before) ||
                (result.size() <= all.size() && Same(result, all.last(result.size()))),
            "a successful exchange returns what came last");
    Require(!with_header || (result.at(layout.cmd) == cmd && result.at(layout.return_code) == 0),
            "a valid reply has the command and no error");
  } else if (with_header) {
    Require(result.size() <= layout.header_size, "a failed exchange returns at most a header");
  } else {
    Require(result == before, "a failed exchange leaves the result unchanged");
  }
}

// Operations built on exchanges.
void Others(unsigned which, std::uint8_t version, std::uint8_t cmd, fuzz::Input& input) {
  const Line line(input, true);
  const auto& client = fuzz::OpenClient(version);
  quarn::lidar::KtcSerialClient tunnel(client);
  if (which <= 1) {
    Vector frame;
    const bool good = tunnel.QueryFrame(cmd, {}, frame, 0) == 0;
    Require(good ? CheckReply(quarn::lidar::ReplyKind::kCommand, frame) : frame.empty(),
            "a tunnelled exchange returns a reply or nothing");
  } else if (which == 2) {
    quarn::lidar::OtaReply reply{0xEE, 0xEE};
    const bool good = tunnel.ExchangeOta(1, 2, {}, cmd, reply) == 0;
    Require(good || (reply.command == 0xEE && reply.status == 0xEE),
            "a failed exchange leaves the status unchanged");
  } else {
    std::atomic<std::uint32_t> progress = 0;
    const int result = client->TransferFile(Vector(2500, cmd), cmd, (cmd & 1U) != 0, progress);
    Require(progress <= 3 && (result != 0 || version == 2 || progress == 3), "progress counts the pieces");
  }
}

// Whatever happened on the line before, a valid reply is understood in blocks of any size.
void CheckRecovery(std::uint8_t version, std::uint8_t cmd, std::size_t block) {
  const Vector payload = {1, 2, 3, 4, 5};
  fuzz::AnswerWith(
      [&](Bytes /*request*/) {
        Vector reply;
        quarn::lidar::KtcParser(version).KtcStreamEncode(payload, reply, cmd);
        return reply;
      },
      block);
  Vector result;
  Require(fuzz::OpenClient(version)->QueryCommand({}, result, cmd) == 0 && result == payload,
          "the next exchange is understood");
  fuzz::Script() = {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const unsigned options = input.Byte();
  const std::uint8_t version = (options & 1U) == 0 ? 1 : 2;
  const std::uint8_t cmd = input.Byte();
  if ((options & 8U) == 0) {
    Query(version, cmd, (options & 4U) == 0, (options & 2U) != 0, input);
  } else {
    Others((options >> 1U) & 3U, version, cmd, input);
  }
  CheckRecovery(version, cmd, 2 + options / 16);
  return 0;
}
