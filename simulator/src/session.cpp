#include "simulator/src/session.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "simulator/src/command_key.h"
#include "simulator/src/frame_reader.h"
#include "simulator/src/reply_frame.h"

namespace varkel::sim {
namespace {

constexpr std::size_t kReadSize = 4096;

bool SendInPieces(ByteStream& stream, std::span<const std::uint8_t> bytes, std::size_t piece_size,
                  const StopSignal& stop) {
  while (!bytes.empty()) {
    const std::size_t size = std::min(piece_size, bytes.size());
    if (!stream.SendAll(bytes.first(size))) return false;
    bytes = bytes.subspan(size);
    if (!bytes.empty() && stop.WaitFor(ReplyPlan::kPieceGap)) return false;
  }
  return true;
}

/// False when the conversation is over.
bool SendReply(ByteStream& stream, const std::vector<std::uint8_t>& frame, const ReplyPlan& plan,
               const StopSignal& stop) {
  if (plan.silent) return true;
  std::vector<std::uint8_t> bytes = Noise(plan.noise_size);
  bytes.insert(bytes.end(), frame.begin(), frame.end());
  if (plan.closes) {
    const std::size_t half = plan.noise_size + frame.size() / 2;
    bytes.resize(std::min(bytes.size(), plan.close_after.value_or(half)));
  }
  const bool sent =
      plan.piece_size ? SendInPieces(stream, bytes, *plan.piece_size, stop) : stream.SendAll(bytes);
  return sent && !plan.closes;
}

Reply Handle(const ReceivedRequest& request, ReplyPlan& plan, const SessionParts& parts) {
  if (plan.error) return {*plan.error, {}};
  if (parts.replay != nullptr) return parts.replay->Answer(request, plan);
  if (parts.tunnel != nullptr && SmallSensorTunnel::Takes(request)) {
    return parts.tunnel->Handle(request, plan);
  }
  return parts.handler.Handle(request, plan.clamp);
}

/// False when the conversation is over.
bool Answer(ByteStream& stream, const ReceivedRequest& request, const StopSignal& stop,
            RestartSwitch& restart, const SessionParts& parts) {
  parts.log.Add(request);
  ReplyPlan plan = parts.faults.Next(KeyOfRequest(request));
  const Reply reply = Handle(request, plan, parts);
  if (parts.watcher) parts.watcher({request, reply.return_code, reply.payload.size()});
  if (plan.delay.count() > 0 && stop.WaitFor(plan.delay)) return false;

  const bool restarts = reply.restarts && restart.Begin();
  const std::uint8_t echo = plan.echo.value_or(request.command);
  const bool goes_on =
      SendReply(stream, ReplyFrame(request.version, echo, reply, plan.length_lie), plan, stop);
  if (restarts) {
    stream.End();  // the finished restart shuts the socket down
    restart.Finish();
  }
  return goes_on && !restarts;
}

}  // namespace

void ServeClient(ByteStream& stream, const StopSignal& stop, RestartSwitch& restart,
                 const SessionParts& parts) {
  FrameReader reader;
  std::array<std::uint8_t, kReadSize> buffer{};
  while (!stop.raised()) {
    const int received = stream.Receive(buffer);
    if (received <= 0) break;
    reader.Append(std::span(buffer).first(static_cast<std::size_t>(received)));
    while (const auto request = reader.Next()) {
      if (!Answer(stream, *request, stop, restart, parts)) return;
    }
    if (const auto& refused = reader.refused()) {
      stream.SendAll(ReplyFrame(refused->version, refused->command, {kWrongPayloadSize, {}}, 0));
      break;
    }
  }
  stream.End();
}

}  // namespace varkel::sim
