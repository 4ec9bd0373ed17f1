// Serial replies: the check, the assembly from pieces and the split of the stream, in any split.
//
// Input: options, then pieces of the stream: 0 nothing came in time, 251 a good reply (code, size, contents),
// 252 the same with one byte changed (position, mask), 253 the same cut short (size left), any other number
// so many bytes.
#include <limits>
#include <utility>

#include "fuzz/input.h"
#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Source/src/reply_assembler.h"
#include "libquarn/Source/src/serial_client.h"
#include "libquarn/Source/src/serial_stream_splitter.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using quarn::lidar::CheckReply;
using quarn::lidar::ReplyAssembler;
using quarn::lidar::ReplyKind;

constexpr std::uint32_t kNonce = 0x01020304;

Vector GoodReply(ReplyKind kind, fuzz::Input& input) {
  const std::uint8_t code = input.Byte();
  const Bytes rest = input.Take(input.Byte());
  return quarn::lidar::EncodeReplyFrame(kind, code, rest, kNonce);
}

std::vector<Vector> ReadPieces(ReplyKind kind, fuzz::Input& input) {
  std::vector<Vector> pieces;
  while (!input.empty()) {
    const std::uint8_t what = input.Byte();
    if (what < 251 || what > 253) {
      const Bytes raw = input.Take(what);
      pieces.emplace_back(raw.begin(), raw.end());
      continue;
    }
    Vector reply = GoodReply(kind, input);
    if (what == 252) {
      const std::size_t position = input.Number<std::uint16_t>() % reply.size();
      reply[position] = static_cast<std::uint8_t>(reply[position] ^ input.Byte());
    } else if (what == 253) {
      reply.resize(std::min<std::size_t>(reply.size(), input.Byte()));
    }
    pieces.push_back(std::move(reply));
  }
  return pieces;
}

Vector Joined(const std::vector<Vector>& pieces) {
  Vector all;
  for (const Vector& piece : pieces) all.insert(all.end(), piece.begin(), piece.end());
  return all;
}

std::vector<Vector> Cut(Bytes bytes, std::size_t size) {
  std::vector<Vector> pieces;
  for (; !bytes.empty(); bytes = bytes.subspan(std::min(size, bytes.size()))) {
    const Bytes piece = bytes.first(std::min(size, bytes.size()));
    pieces.emplace_back(piece.begin(), piece.end());
  }
  return pieces;
}

// ---- The check

void CheckOneBlock(ReplyKind kind, Bytes block) {
  if (!CheckReply(kind, block)) return;
  const Bytes body = quarn::lidar::ReplyBody(block);
  Require(body.size() >= 2 && block.size() == quarn::lidar::ReplySize(body[0]),
          "a good reply has its length");
  Vector changed(block.begin(), block.end());
  changed.back() ^= 1U;
  Require(!CheckReply(kind, changed), "the trailer counts");
  changed.back() ^= 1U;
  changed[8] ^= 0x10U;
  Require(!CheckReply(kind, changed), "the CRC covers the body");
  Require(!CheckReply(kind, block.first(block.size() - 1)), "a cut reply is none");
}

// ---- The assembly

void CheckAssembled(ReplyKind kind, const ReplyAssembler& assembler, ReplyAssembler::State state,
                    Bytes stream) {
  const auto text = [](Bytes bytes) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  };
  const Bytes block = assembler.block();
  Require(text(stream).find(text(block)) != std::string_view::npos, "a block is a part of the stream");
  Require((state == ReplyAssembler::State::kPassed) <= CheckReply(kind, block), "what passed is a reply");
}

void Assemble(ReplyKind kind, const std::vector<Vector>& pieces) {
  const Vector stream = Joined(pieces);
  ReplyAssembler assembler(kind);
  for (const Vector& piece : pieces) {
    const auto state = assembler.Add(piece);
    CheckAssembled(kind, assembler, state, stream);
    Require(assembler.block().size() <= quarn::lidar::kMaxReplyBlock ||
                state != ReplyAssembler::State::kIncomplete,
            "what waits for more is a block at most");
  }
  const auto state = assembler.Finish();
  Require(state != ReplyAssembler::State::kIncomplete, "an end decides");
  CheckAssembled(kind, assembler, state, stream);
}

// Noise that holds neither a tag's beginning nor a trailer's, and a reply that broke off, never hide a reply,
// whatever the pieces.
void AssembleBehindNoise(ReplyKind kind, Bytes noise, std::size_t piece_size) {
  Vector stream(noise.begin(), noise.end());
  std::replace(stream.begin(), stream.end(), std::uint8_t{'$'}, std::uint8_t{0});
  std::replace(stream.begin(), stream.end(), std::uint8_t{0xEE}, std::uint8_t{0});
  const Bytes contents = Bytes(stream).first(std::min<std::size_t>(stream.size(), 200));
  const Vector reply = quarn::lidar::EncodeReplyFrame(kind, 2, contents, kNonce);
  const Bytes stump = Bytes(reply).first(noise.size() * piece_size % reply.size());
  stream.insert(stream.end(), stump.begin(), stump.end());
  stream.insert(stream.end(), reply.begin(), reply.end());
  ReplyAssembler assembler(kind);
  for (const Vector& piece : Cut(stream, piece_size)) assembler.Add(piece);
  Require(assembler.Finish() == ReplyAssembler::State::kPassed && Same(assembler.block(), reply),
          "a reply behind noise is found");
}

// ---- The split of the stream

/// Every byte that came out, with 0 for data, 1 within a reply, 2 at a reply's beginning.
using Labelled = std::vector<std::pair<std::uint8_t, int>>;

Labelled SplitOf(const std::vector<Vector>& pieces) {
  Labelled bytes;
  const auto note = [&bytes](Bytes piece, int first, int others) {
    for (const std::uint8_t byte : piece) bytes.emplace_back(byte, std::exchange(first, others));
  };
  quarn::lidar::SerialStreamSplitter splitter(
      {[&note](Bytes piece, bool begins) { note(piece, begins ? 2 : 1, 1); },
       [&note](Bytes piece) { note(piece, 0, 0); }});
  for (const Vector& piece : pieces) splitter.Add(piece);
  return bytes;
}

void SplitStream(const std::vector<Vector>& pieces, std::size_t other_size) {
  const Vector stream = Joined(pieces);
  const Labelled split = SplitOf(pieces);
  Require(split.size() <= stream.size() && stream.size() - split.size() < quarn::lidar::kSerialTagSize,
          "no more than the beginning of a tag is kept back");
  std::size_t left = 0;
  for (std::size_t i = 0; i < split.size(); ++i) {
    const auto [byte, place] = split[i];
    Require(byte == stream[i], "every byte comes out once and in order");
    if (place == 2) {
      Require(left == 0 && i + 7 < stream.size() + 1, "replies do not overlap");
      left = i + 7 < stream.size() ? quarn::lidar::ReplySize(stream[i + 7]) : stream.size() - i;
    }
    Require((place != 0) == (left > 0), "a reply is as long as it says");
    if (left > 0) --left;
  }
  Require(SplitOf(Cut(stream, other_size)) == split, "pieces do not matter");
}

// ---- The client

class ScriptedSource : public quarn::lidar::Source {
 public:
  explicit ScriptedSource(const std::vector<Vector>& pieces) : pieces_(pieces) {}

  bool Open() override { return true; }
  bool IsOpened() override { return true; }
  int Send(const std::uint8_t* /*data*/, std::uint16_t length, int /*flags*/) override { return length; }
  void SetReceiveBufferSize(std::uint32_t /*size*/) override {}
  int Receive(quarn::lidar::UdpPacket& packet, std::uint16_t length, int /*flags*/,
              int /*timeout_us*/) override {
    if (next_ == pieces_.size()) return -1;
    const Bytes whole = pieces_[next_++];
    const Bytes piece = whole.first(std::min<std::size_t>(length, whole.size()));
    std::copy(piece.begin(), piece.end(), packet.data.begin());
    return static_cast<int>(piece.size());
  }

 private:
  const std::vector<Vector>& pieces_;
  std::size_t next_ = 0;
};

void Exchange(ReplyKind kind, const std::vector<Vector>& pieces) {
  const auto line = std::make_shared<ScriptedSource>(pieces);
  quarn::lidar::SerialClient client(line, line);
  std::string log;
  client.SetLogCallback([&log](const std::string& text) { log = text; });
  if (kind == ReplyKind::kCommand) {
    Vector frame;
    const int result = client.QueryFrame(1, {}, frame, std::numeric_limits<std::uint32_t>::max());
    Require(result == 0 ? CheckReply(kind, frame) : frame.empty(), "an exchange gives a reply or nothing");
    Require(result != 0 || log == "RECV: " + quarn::lidar::HexLine(frame), "the log shows what came");
  } else {
    quarn::lidar::OtaReply reply{0xEE, 0xEE};
    const int result = client.ExchangeOta(1, 2, {}, 3, reply);
    Require(result == 0 || (reply.command == 0xEE && reply.status == 0xEE),
            "a failed exchange leaves the status");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const unsigned options = input.Byte();
  const ReplyKind kind = (options & 1U) == 0 ? ReplyKind::kCommand : ReplyKind::kOta;
  const std::size_t other_size = 1 + options / 2;
  const std::vector<Vector> pieces = ReadPieces(kind, input);
  for (const Vector& piece : pieces) CheckOneBlock(kind, piece);
  Assemble(kind, pieces);
  const Vector stream = Joined(pieces);
  AssembleBehindNoise(kind, Bytes(stream).first(std::min<std::size_t>(stream.size(), 300)), other_size);
  SplitStream(pieces, other_size);
  Exchange(kind, pieces);
  return 0;
}
