// The KTC reply path as the client reads it: any bytes in any split, silences and broken lines in between.
//
// Input: options, command, then what the transport delivers: 0 a silence, 255 a broken line, any other
// number a block of so many bytes. A silence ends what stood in the line ahead of the request.
#include <atomic>
#include <utility>

#include "fuzz/input.h"
#include "fuzz/scripted_transport.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Source/src/ktc_serial_client.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using quarn::lidar::KtcClient;

/// Plays the input's rest as the line.
class Line {
 public:
  explicit Line(fuzz::Input& input, bool sends) : input_(input) {
    fuzz::Script().send = [this, sends](Bytes frame) {
      sent = true;
      delivered.clear();
      return sends ? static_cast<int>(frame.size()) : static_cast<int>(frame.size()) - 1;
    };
    fuzz::Script().receive = [this](std::span<std::uint8_t> buffer) { return Receive(buffer); };
  }
  ~Line() { fuzz::Script() = {}; }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  Vector delivered;    ///< since the last request
  bool ended = false;  ///< the last receive gave nothing
  bool sent = false;

 private:
  int Receive(std::span<std::uint8_t> buffer) {
    while (block_.empty()) {
      const std::uint8_t size = input_.Byte();
      ended = size == 0 || size == 0xFF;
      if (ended) return size == 0 ? 0 : -1;
      block_ = input_.Take(size);
      ended = block_.empty();
      if (ended) return 0;
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

struct Frame {
  explicit Frame(std::uint8_t version) : parser(version), layout(parser.parser()->layout()) {}

  bool Begins(Bytes bytes) const {
    return bytes.size() >= layout.header_size && bytes[0] == parser.parser()->GetHeaderIdentifier0() &&
           bytes[1] == parser.parser()->GetHeaderIdentifier1();
  }
  std::size_t PayloadLength(Bytes header) const {
    return quarn::lidar::LoadBigEndian<std::uint32_t>(header, layout.payload_length);
  }

  const quarn::lidar::KtcParser parser;
  const quarn::lidar::KtcLayout layout;
};

// What came is noise, one header and exactly the payload that the header announces.
void CheckSuccess(const Frame& frame, const Line& line, std::uint8_t cmd, const Vector& result, Bytes before,
                  bool with_header) {
  const Bytes all = line.delivered;
  for (std::size_t at = 0; at + frame.layout.header_size <= all.size(); ++at) {
    const Bytes reply = all.subspan(at);
    if (!frame.Begins(reply)) continue;
    const std::size_t length = frame.PayloadLength(reply);
    if (reply.size() != frame.layout.header_size + length || reply[frame.layout.cmd] != cmd ||
        reply[frame.layout.return_code] != 0) {
      continue;
    }
    const Bytes payload = length == 0 ? before : reply.subspan(frame.layout.header_size);
    if (Same(result, with_header ? reply : payload)) return;
  }
  Require(false, "a good exchange delivers exactly the reply that came");
}

void CheckFailure(const Frame& frame, const Line& line, std::uint8_t cmd, std::int32_t code, bool sends,
                  const Vector& result, Bytes before, bool with_header) {
  if (!sends) {
    Require(code == KtcClient::kNotSent, "a request cut short is told");
  } else if (code == KtcClient::kNoHeader || code == KtcClient::kNoPayload) {
    Require(line.ended, "a missing reply is told only where nothing came");
  } else {
    const Bytes all = line.delivered;
    Require(all.size() >= frame.layout.header_size, "a refusal needs a header");
    const Bytes header = all.last(frame.layout.header_size);
    Require(frame.Begins(header) && code == header[frame.layout.return_code] &&
                (code != 0 || header[frame.layout.cmd] != cmd),
            "a refusal is the sensor's own");
  }
  const bool as_before = Same(result, before);
  if (!with_header || code == KtcClient::kNoPayload) {
    Require(as_before, "a failed exchange leaves the result");
  } else {
    Require(result.size() <= frame.layout.header_size, "a failed exchange gives a header at most");
  }
}

// Whatever the line did before, a sensor that answers well is understood in any split, noise ahead or not.
void CheckRecovery(std::uint8_t version, std::uint8_t cmd, Bytes noise, std::size_t piece) {
  const Frame frame(version);
  Vector blocks(noise.begin(), noise.end());
  std::replace(blocks.begin(), blocks.end(), frame.parser.parser()->GetHeaderIdentifier0(), std::uint8_t{0});
  const std::size_t noise_size = blocks.size();
  const Vector payload = {1, 2, 3, 4, 5};
  Vector reply;
  frame.parser.KtcStreamEncode(payload, reply, cmd);
  blocks.insert(blocks.end(), reply.begin(), reply.end());
  std::size_t at = 0;
  bool sent = false;
  fuzz::Script().send = [&sent](Bytes request) {
    sent = true;
    return static_cast<int>(request.size());
  };
  fuzz::Script().receive = [&](std::span<std::uint8_t> buffer) {
    if (!sent) return 0;
    const std::size_t border = at < noise_size ? noise_size : blocks.size();
    const std::size_t count = std::min({buffer.size(), piece, border - at});
    std::copy_n(blocks.begin() + static_cast<std::ptrdiff_t>(at), count, buffer.begin());
    at += count;
    return static_cast<int>(count);
  };
  Vector result;
  Require(fuzz::OpenClient(version)->QueryCommand({}, result, cmd) == 0 && Same(result, payload),
          "the next exchange is understood");
  fuzz::Script() = {};
}

void Query(std::uint8_t version, std::uint8_t cmd, bool sends, bool with_header, fuzz::Input& input) {
  const Frame frame(version);
  const Vector before = {0xAA, 0xBB};
  Vector result = before;
  Line line(input, sends);
  KtcClient& client = *fuzz::OpenClient(version);
  std::vector<std::string> log;
  client.SetLogCallback([&log](const std::string& text) { log.push_back(text); });
  const int outcome = client.QueryCommand(before, result, cmd, with_header);
  client.SetLogCallback({});
  const std::string received =
      outcome == 0 ? quarn::lidar::HexLine(result) : "ret_code is " + std::to_string(client.LastReturnCode());
  Require(log.size() == 2 && log[0].starts_with("SEND: ") && log[1] == "RECV: " + received,
          "the log shows what came");
  if (outcome == 0) {
    Require(sends, "nothing succeeds without a request");
    CheckSuccess(frame, line, cmd, result, before, with_header);
  } else {
    CheckFailure(frame, line, cmd, client.LastReturnCode(), sends, result, before, with_header);
  }
}

// Pieces of a stream that the frames' decoders cut out.
void Decode(std::uint8_t version, std::uint8_t cmd, fuzz::Input& input) {
  const auto offset = static_cast<std::int32_t>(input.Number<std::uint32_t>());
  const auto length = static_cast<std::int32_t>(input.Number<std::uint32_t>());
  const Bytes rest = input.Rest();
  Vector bytes(rest.begin(), rest.end());
  Vector piece = {0xAA};
  const bool cut = fuzz::OpenClient(version)->KtcStreamDecode(cmd, cmd, bytes, offset, length, piece);
  if (version == 1 && cut && !piece.empty()) {
    Require(Same(piece, rest.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(length))),
            "a piece is cut where it was asked for");
  }
  fuzz::OpenClient(version)->KtcStreamDecode(cmd, cmd, bytes, offset, length, bytes);
}

// What is built on exchanges.
void Others(unsigned which, std::uint8_t version, std::uint8_t cmd, fuzz::Input& input) {
  Line line(input, true);
  const auto& client = fuzz::OpenClient(version);
  quarn::lidar::KtcSerialClient tunnel(client);
  Vector frame;
  switch (which) {
    case 0: {
      quarn::lidar::FovAngles starts{-1, -1, -1, -1, -1};
      quarn::lidar::FovAngles ends = starts;
      int count = 0;
      if (client->QueryMultiFov(starts, ends, count) == 0) {
        Require(count >= 0 && count <= 5, "five fields of view at most");
        for (std::size_t i = 0; i < starts.size(); ++i) {
          const bool set = starts.at(i) != -1 && ends.at(i) != -1;
          Require(set == std::cmp_less(i, count), "angles that did not come keep their values");
        }
      }
      break;
    }
    case 1:
      if (tunnel.QueryFrame(cmd, {}, frame, 0) == 0) {
        Require(
            CheckReply(quarn::lidar::ReplyKind::kCommand, frame) && frame.size() + 2 <= line.delivered.size(),
            "a tunnelled reply is a whole one that came");
      } else {
        Require(frame.empty(), "a failed tunnel leaves the frame");
      }
      break;
    case 2: {
      quarn::lidar::OtaReply reply{0xEE, 0xEE};
      if (tunnel.ExchangeOta(1, 2, {}, cmd, reply) != 0) {
        Require(reply.command == 0xEE && reply.status == 0xEE, "a failed exchange leaves the status");
      }
      break;
    }
    default: {
      const Vector file(2500, cmd);
      std::atomic<std::uint32_t> progress = 0;
      const int result = client->TransferFile(file, cmd, (cmd & 1U) != 0, progress);
      Require(progress <= 3 && (result != 0 || version == 2 || progress == 3), "progress counts the pieces");
      break;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const unsigned options = input.Byte();
  const std::uint8_t version = (options & 1U) == 0 ? 1 : 2;
  const std::uint8_t cmd = input.Byte();
  if ((options & 0xF8U) == 0xF8U) {
    Decode(version, cmd, input);
  } else if ((options & 8U) == 0) {
    Query(version, cmd, (options & 4U) == 0, (options & 2U) != 0, input);
  } else {
    Others((options >> 1U) & 3U, version, cmd, input);
  }
  CheckRecovery(version, cmd, input.Take(64), 2 + options / 16);
  return 0;
}
