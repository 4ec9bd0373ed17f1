#include "simulator/src/replay.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "libquarn/Capture/src/captured_exchanges.h"
#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Source/src/ktc_serial_client.h"
#include "simulator/src/return_code.h"

namespace varkel::sim {
namespace {

using quarn::lidar::CapturedExchange;
using Answer = CapturedExchange::Answer;

constexpr std::size_t kMostUnseen = 1000;
/// Size of the nonce, CRC and trailer of a command frame.
constexpr std::size_t kSerialTail = 10;

bool IsPresenceCheck(const ReceivedRequest& request) {
  return request.payload.empty() && (request.command == 7 || request.command == 8);
}

}  // namespace

Replay::Key Replay::KeyOf(std::uint8_t command, std::vector<std::uint8_t> payload) {
  const std::string_view tag = quarn::lidar::SerialTag(quarn::lidar::ReplyKind::kCommand);
  const std::size_t tag_end = quarn::lidar::kTunnelPrefix.size() + tag.size();
  if (quarn::lidar::CarriesSerialFrame(command, payload) && payload.size() >= tag_end + kSerialTail &&
      std::equal(tag.begin(), tag.end(), payload.begin() + quarn::lidar::kTunnelPrefix.size())) {
    payload.resize(payload.size() - kSerialTail);
  }
  return {command, std::move(payload)};
}

Replay::Replay(std::istream& recording, Pace pace) : pace_(pace) {
  const auto take = [this](const CapturedExchange& exchange) {
    if (exchange.protocol == CapturedExchange::Protocol::kSerialLines) return;
    const std::string sensor = FormatEndpoint(exchange.sensor);
    if (sensor_.empty()) sensor_ = sensor;
    if (sensor != sensor_) return;
    ++exchanges_;
    Recorded recorded;
    recorded.is_silent = exchange.answer == Answer::kNone;
    if (!recorded.is_silent) {
      recorded.reply = {exchange.return_code, exchange.reply};
      recorded.echo = exchange.reply_command;
      recorded.missing = std::int64_t{exchange.announced} - static_cast<std::int64_t>(exchange.reply.size());
      recorded.delay =
          std::chrono::duration_cast<std::chrono::milliseconds>(exchange.answered - exchange.asked);
    }
    std::vector<Recorded>& list = answers_[KeyOf(exchange.command, exchange.request)].list;
    const bool repeats = !list.empty() && list.back().is_silent == recorded.is_silent &&
                         list.back().echo == recorded.echo && list.back().missing == recorded.missing &&
                         list.back().reply.return_code == recorded.reply.return_code &&
                         list.back().reply.payload == recorded.reply.payload;
    repeats ? static_cast<void>(++list.back().times) : list.push_back(std::move(recorded));
  };
  fault_ = quarn::lidar::ReadCapture(recording, take).fault;
  if (exchanges_ == 0) {
    throw std::runtime_error("The recording has no KTC exchanges." + (fault_.empty() ? "" : " " + fault_));
  }
}

Reply Replay::Answer(const ReceivedRequest& request, ReplyPlan& plan) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const Key key = KeyOf(request.command, request.payload);
  const auto found = answers_.find(key);
  if (found == answers_.end()) {
    if (unseen_.size() < kMostUnseen || unseen_.count(key) != 0) ++unseen_[key];
    return {IsPresenceCheck(request) ? kSuccess : kUnknownCommand, {}};
  }
  Answers& answers = found->second;
  if (answers.used == answers.list[answers.next].times && answers.next + 1 < answers.list.size()) {
    ++answers.next;
    answers.used = 0;
  }
  const Recorded& recorded = answers.list[answers.next];
  answers.used = std::min(answers.used + 1, recorded.times);
  plan.silent = plan.silent || recorded.is_silent;
  if (!recorded.is_silent && recorded.echo != request.command) plan.echo = recorded.echo;
  plan.length_lie += recorded.missing;
  if (pace_ == Pace::kRecorded) plan.delay += std::max(recorded.delay, std::chrono::milliseconds(0));
  return recorded.reply;
}

std::vector<std::string> Replay::Unrecorded() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::string> lines;
  for (const auto& [key, count] : unseen_) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "0x%02X", unsigned{key.first});
    std::string line = std::string("command ") + code.data();
    if (!key.second.empty()) line += ", payload " + quarn::lidar::HexText(key.second);
    lines.push_back(line + (count == 1 ? ": once" : ": " + std::to_string(count) + " times"));
  }
  return lines;
}

}  // namespace varkel::sim
