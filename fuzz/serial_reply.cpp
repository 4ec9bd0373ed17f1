// Serial replies: checking them, assembling them from pieces and splitting the stream, in pieces of any size.
//
// Input: options, then pieces of the stream: 0 is a time-out, 251 a valid reply (code, size, contents), 252
// the same with one byte changed (position, mask), 253 the same cut short (remaining size), any other number
// that many bytes.
#include <string>
#include <utility>

#include "fuzz/input.h"
#include "libquarn/Source/src/reply_assembler.h"
#include "libquarn/Source/src/serial_stream_splitter.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Same;
using fuzz::Vector;
using quarn::lidar::ReplyAssembler;
using quarn::lidar::ReplyKind;

std::vector<Vector> ReadPieces(ReplyKind kind, fuzz::Input& input) {
  std::vector<Vector> pieces;
  while (!input.empty()) {
    const std::uint8_t what = input.Byte();
    if (what < 251 || what > 253) {
      const Bytes raw = input.Take(what);
      pieces.emplace_back(raw.begin(), raw.end());
      continue;
    }
    const std::uint8_t code = input.Byte();
    Vector reply = quarn::lidar::EncodeReplyFrame(kind, code, input.Take(input.Byte()), 0x01020304);
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

std::vector<Vector> Cut(Bytes bytes, std::size_t size) {
  std::vector<Vector> pieces;
  for (; !bytes.empty(); bytes = bytes.subspan(pieces.back().size())) {
    const Bytes piece = bytes.first(std::min(size, bytes.size()));
    pieces.emplace_back(piece.begin(), piece.end());
  }
  return pieces;
}

void Assemble(ReplyKind kind, const std::vector<Vector>& pieces) {
  ReplyAssembler assembler(kind);
  const auto check = [&](ReplyAssembler::State state) {
    Require(state != ReplyAssembler::State::kPassed || CheckReply(kind, assembler.block()),
            "only a valid reply passes");
    return state;
  };
  for (const Vector& piece : pieces) {
    Require(check(assembler.Add(piece)) != ReplyAssembler::State::kIncomplete ||
                assembler.block().size() <= quarn::lidar::kMaxReplyBlock,
            "at most a block waits for more");
  }
  Require(check(assembler.Finish()) != ReplyAssembler::State::kIncomplete, "an end decides");
}

// Noise without the beginning of a tag or a trailer, or a reply that broke off, never hides a reply, whatever
// the pieces.
void AssembleAfterNoise(ReplyKind kind, Vector noise, std::size_t piece_size) {
  std::replace(noise.begin(), noise.end(), std::uint8_t{'$'}, std::uint8_t{0});
  std::replace(noise.begin(), noise.end(), std::uint8_t{0xEE}, std::uint8_t{0});
  const Bytes contents = Bytes(noise).first(std::min<std::size_t>(noise.size(), 200));
  const Vector reply = quarn::lidar::EncodeReplyFrame(kind, 2, contents, 1);
  const Bytes stump = Bytes(reply).first(noise.size() * piece_size % reply.size());
  Vector stream = noise;
  stream.insert(stream.end(), stump.begin(), stump.end());
  stream.insert(stream.end(), reply.begin(), reply.end());
  ReplyAssembler assembler(kind);
  for (const Vector& piece : Cut(stream, piece_size)) assembler.Add(piece);
  Require(assembler.Finish() == ReplyAssembler::State::kPassed && Same(assembler.block(), reply),
          "a reply after noise is found");
}

/// Every byte of the split's output, with 0 for data, 1 within a reply, 2 at the beginning of a reply.
using Labelled = std::vector<std::pair<std::uint8_t, int>>;

Labelled SplitOf(const std::vector<Vector>& pieces) {
  Labelled bytes;
  const auto note = [&bytes](Bytes piece, int first, int others) {
    for (const std::uint8_t byte : piece) bytes.emplace_back(byte, std::exchange(first, others));
  };
  const auto begins_with_tag = [](Bytes piece) {
    const std::string text(piece.begin(), piece.end());
    return text.starts_with(SerialTag(ReplyKind::kCommand)) || text.starts_with(SerialTag(ReplyKind::kOta));
  };
  // A reply with a garbled tag is output as data first, and then as a whole reply.
  quarn::lidar::SerialStreamSplitter splitter({[&](Bytes piece, bool begins) {
                                                 if (!begins || begins_with_tag(piece))
                                                   return note(piece, begins ? 2 : 1, 1);
                                                 Require(CheckReply(ReplyKind::kCommand, piece) ||
                                                             CheckReply(ReplyKind::kOta, piece),
                                                         "a reply without a tag passes every check");
                                               },
                                               [&note](Bytes piece) { note(piece, 0, 0); }});
  for (const Vector& piece : pieces) splitter.Add(piece);
  return bytes;
}

void SplitStream(const std::vector<Vector>& pieces, Bytes stream, std::size_t other_size) {
  const Labelled split = SplitOf(pieces);
  Require(split.size() <= stream.size() && stream.size() - split.size() < quarn::lidar::kSerialTagSize,
          "no more than the beginning of a tag is kept back");
  Require(std::equal(split.begin(), split.end(), stream.begin(),
                     [](const auto& labelled, std::uint8_t byte) { return labelled.first == byte; }),
          "every byte comes out once and in order");
  Require(SplitOf(Cut(stream, other_size)) == split, "pieces do not matter");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input({data, size});
  const unsigned options = input.Byte();
  const ReplyKind kind = (options & 1U) == 0 ? ReplyKind::kCommand : ReplyKind::kOta;
  const std::size_t other_size = 1 + options / 2;
  const std::vector<Vector> pieces = ReadPieces(kind, input);
  Vector stream;
  for (const Vector& piece : pieces) stream.insert(stream.end(), piece.begin(), piece.end());
  Assemble(kind, pieces);
  SplitStream(pieces, stream, other_size);
  stream.resize(std::min<std::size_t>(stream.size(), 300));
  AssembleAfterNoise(kind, stream, other_size);
  return 0;
}
