#include "libquarn/Capture/src/captured_exchanges.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "libquarn/Capture/src/capture_recorder.h"
#include "libquarn/Capture/src/ktc_frame_splitter.h"
#include "libquarn/Capture/src/pcap_reader.h"
#include "libquarn/Capture/src/tcp_conversation.h"

namespace quarn::lidar {
namespace {

using Answer = CapturedExchange::Answer;
using Protocol = CapturedExchange::Protocol;
using ByteView = std::span<const std::uint8_t>;
using TakeExchange = std::function<void(const CapturedExchange&)>;

/// Matches the requests and replies of one connection.
class Pairing {
 public:
  Pairing(const TcpConversations::Connection& connection, const TakeExchange& take, CaptureSummary& summary)
      : connection_(connection), take_(take), summary_(summary) {}

  void Add(WireDirection direction, CaptureTime time, ByteView bytes) {
    if (connection_.sensor == kSerialLinesEndpoint) {
      direction == WireDirection::kToSensor ? AddSerialRequest(time, bytes) : AddSerialReply(time, bytes);
      return;
    }
    KtcFrameSplitter& splitter = Splitter(direction);
    splitter.Append(bytes);
    last_ = time;
    while (auto frame = splitter.Next()) {
      direction == WireDirection::kToSensor ? Ask(std::move(*frame), time)
                                            : Reply(std::move(*frame), time, Answer::kWhole);
    }
  }

  /// Bytes are missing, so an incomplete frame will never be completed.
  void Lose(WireDirection direction) {
    if (direction == WireDirection::kToSensor) {
      requests_.TakeIncomplete();
    } else {
      BreakOff();
    }
  }

  void End() {
    BreakOff();
    requests_.TakeIncomplete();
    while (!pending_.empty()) Emit();
    summary_.noise += requests_.noise() + replies_.noise();
  }

 private:
  KtcFrameSplitter& Splitter(WireDirection direction) {
    return direction == WireDirection::kToSensor ? requests_ : replies_;
  }

  /// The tool gives up on a reply before it sends the next request.
  void Ask(KtcFrame frame, CaptureTime time) {
    BreakOff();
    CapturedExchange& exchange = Begin(frame.version == 1 ? Protocol::kKtc1 : Protocol::kKtc2, time);
    exchange.command = frame.command;
    exchange.request = std::move(frame.payload);
  }

  void BreakOff() {
    if (auto frame = replies_.TakeIncomplete()) Reply(std::move(*frame), last_, Answer::kIncomplete);
  }

  void Reply(KtcFrame frame, CaptureTime time, Answer answer) {
    const auto waits = [](const CapturedExchange& exchange) { return exchange.answer == Answer::kNone; };
    auto found = std::find_if(pending_.rbegin(), pending_.rend(), [&](const CapturedExchange& exchange) {
      return waits(exchange) && exchange.command == frame.command;
    });
    if (found == pending_.rend() && !pending_.empty() && waits(pending_.back())) found = pending_.rbegin();
    if (found == pending_.rend()) {
      ++summary_.unsolicited;
      return;
    }
    found->answer = answer;
    found->answered = time;
    found->reply_command = frame.command;
    found->return_code = frame.return_code;
    found->announced = frame.announced;
    found->reply = std::move(frame.payload);
    EmitAnswered();
  }

  // On serial lines each frame arrives in one piece, however many segments carry it.
  void AddSerialRequest(CaptureTime time, ByteView bytes) {
    constexpr std::size_t kCode = 8;        // of a command frame
    constexpr std::size_t kFrameType = 10;  // of a firmware frame
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!text.starts_with("$LD") && !pending_.empty() && pending_.back().answer == Answer::kNone) {
      pending_.back().request.insert(pending_.back().request.end(), bytes.begin(), bytes.end());
      return;
    }
    CapturedExchange& exchange = Begin(Protocol::kSerialLines, time);
    exchange.request.assign(bytes.begin(), bytes.end());
    const std::size_t code = text.starts_with("$LDOTA,") ? kFrameType : kCode;
    if (bytes.size() > code) exchange.command = bytes[code];
  }

  void AddSerialReply(CaptureTime time, ByteView bytes) {
    if (pending_.empty()) {
      summary_.noise += bytes.size();
      return;
    }
    CapturedExchange& exchange = pending_.back();
    exchange.answer = Answer::kWhole;
    exchange.answered = time;
    exchange.reply_command = exchange.command;
    exchange.reply.insert(exchange.reply.end(), bytes.begin(), bytes.end());
    exchange.announced = static_cast<std::uint32_t>(exchange.reply.size());
  }

  /// Keeps one unanswered request in addition to the new one, since its reply may come late.
  CapturedExchange& Begin(Protocol protocol, CaptureTime time) {
    EmitAnswered();
    while (pending_.size() > 1 || (protocol == Protocol::kSerialLines && !pending_.empty())) Emit();
    CapturedExchange& exchange = pending_.emplace_back();
    exchange.connection = connection_.number;
    exchange.sensor = connection_.sensor;
    exchange.protocol = protocol;
    exchange.asked = time;
    return exchange;
  }

  void EmitAnswered() {
    while (!pending_.empty() && pending_.front().answer != Answer::kNone &&
           pending_.front().protocol != Protocol::kSerialLines) {
      Emit();
    }
  }

  void Emit() {
    ++summary_.exchanges;
    take_(pending_.front());
    pending_.pop_front();
  }

  const TcpConversations::Connection connection_;
  const TakeExchange& take_;
  CaptureSummary& summary_;
  KtcFrameSplitter requests_;
  KtcFrameSplitter replies_;
  CaptureTime last_;
  std::deque<CapturedExchange> pending_;
};

}  // namespace

CaptureSummary ReadCapture(std::istream& file, const TakeExchange& take_exchange) {
  CaptureSummary summary;
  std::map<std::size_t, Pairing> pairings;
  const auto pairing_of = [&](const TcpConversations::Connection& connection) -> Pairing& {
    return pairings.try_emplace(connection.number, connection, take_exchange, summary).first->second;
  };
  TcpConversations conversations({[&](const auto& connection, WireDirection direction, CaptureTime time,
                                      ByteView bytes) { pairing_of(connection).Add(direction, time, bytes); },
                                  [&](const auto& connection, WireDirection direction, std::uint64_t lost) {
                                    summary.lost += lost;
                                    pairing_of(connection).Lose(direction);
                                  },
                                  [&](const auto& connection) {
                                    ++summary.connections;
                                    const auto ended = pairings.find(connection.number);
                                    if (ended == pairings.end()) return;
                                    ended->second.End();
                                    pairings.erase(ended);
                                  }});
  PcapReader reader(file);
  while (const auto packet = reader.Next()) {
    ++summary.packets;
    if (const auto segment = DecodeTcpPacket(reader.link_type(), packet->bytes)) {
      conversations.Add(*segment, packet->time);
    } else {
      ++summary.other_packets;
    }
  }
  conversations.Finish();
  summary.fault = reader.fault();
  return summary;
}

}  // namespace quarn::lidar
