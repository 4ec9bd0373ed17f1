// Captures: any bytes as a pcap file, and the same bytes as a conversation written by the recorder.
//
// Input: a file. Its bytes after the header are also used as pieces of a conversation: a length with the
// direction in its lowest bit, then that many bytes.
#include <sstream>

#include "fuzz/input.h"
#include "libquarn/Capture/src/captured_exchanges.h"
#include "libquarn/Capture/src/pcap_format.h"
#include "libquarn/Capture/src/tcp_packet.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using quarn::lidar::CapturedExchange;

struct Result {
  quarn::lidar::CaptureSummary summary;
  std::size_t bytes = 0;
};

Result ReadFile(const std::string& file) {
  Result result;
  std::istringstream in(file);
  result.summary = quarn::lidar::ReadCapture(in, [&result](const CapturedExchange& exchange) {
    result.bytes += exchange.request.size() + exchange.reply.size();
    Require(
        exchange.answer != CapturedExchange::Answer::kWhole || exchange.announced == exchange.reply.size(),
        "a whole reply has the length in its header");
  });
  Require(result.bytes <= file.size(), "no byte appears twice");
  return result;
}

void Put(std::string& file, std::uint32_t number) {
  for (int shift = 0; shift < 32; shift += 8) file += static_cast<char>(number >> shift);
}

/// The pieces as segments in order, of at most `largest` bytes.
std::string Conversation(fuzz::Input input, std::size_t largest) {
  const quarn::lidar::TcpEndpoint tool{{10, 0, 0, 1}, 50000};
  const quarn::lidar::TcpEndpoint sensor{{10, 0, 0, 7}, 9347};
  std::string file;
  for (const std::uint32_t number : {quarn::lidar::kPcapMicroseconds, 0x00040002U, 0U, 0U, 65535U, 101U}) {
    Put(file, number);
  }
  std::uint32_t sequence[] = {0, 0};
  while (!input.empty()) {
    const std::uint8_t head = input.Byte();
    const bool to_sensor = head % 2 == 0;
    Bytes piece = input.Take(head);
    while (!piece.empty()) {
      const Bytes part = piece.first(std::min(piece.size(), largest));
      piece = piece.subspan(part.size());
      const auto packet = quarn::lidar::EncodeTcpPacket({to_sensor ? tool : sensor, to_sensor ? sensor : tool,
                                                         sequence[to_sensor], 0, quarn::lidar::kTcpAck, part},
                                                        0);
      sequence[to_sensor] += static_cast<std::uint32_t>(part.size());
      Put(file, 0);
      Put(file, 0);
      Put(file, static_cast<std::uint32_t>(packet.size()));
      Put(file, static_cast<std::uint32_t>(packet.size()));
      file.append(packet.begin(), packet.end());
    }
  }
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ReadFile({data, data + size});
  const Bytes rest = Bytes(data, size).subspan(std::min(size, quarn::lidar::kPcapHeaderSize));
  const Result whole = ReadFile(Conversation(fuzz::Input(rest), 1460));
  const Result split = ReadFile(Conversation(fuzz::Input(rest), 1 + size % 7));
  Require(whole.summary.fault.empty() && whole.summary.lost == 0, "a whole file has no fault");
  Require(whole.summary.exchanges == split.summary.exchanges && whole.bytes == split.bytes &&
              whole.summary.noise == split.summary.noise,
          "segments do not matter");
  return 0;
}
