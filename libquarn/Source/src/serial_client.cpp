#include "libquarn/Source/src/serial_client.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Source/src/reply_assembler.h"
#include "libquarn/Source/src/serial_source.h"

namespace quarn::lidar {
namespace {

// A wait is passed as an int, in microseconds.
constexpr std::chrono::microseconds kLongestWait = std::chrono::seconds(1000);

bool IsOpen(const std::shared_ptr<Source>& source) {
  return source && source->IsOpened();
}

}  // namespace

ExchangeResult SerialClient::QueryFrame(std::uint8_t code, std::span<const std::uint8_t> payload,
                                        std::uint32_t timeout_ms) {
  const std::lock_guard lock(exchange_mutex_);
  if (!IsOpen(commands_) || !IsOpen(replies_)) {
    return tl::unexpected(kNotSent);
  }
  const std::vector<std::uint8_t> request = EncodeCommandFrame(code, payload, FreshNonce());
  PassToLog("SEND: ", request);
  replies_->Clear(SerialSource::kClearPendingInput);
  if (!SendFrame(request)) {
    return tl::unexpected(kNotSent);
  }
  return ReadReply(*replies_, ReplyKind::kCommand, timeout_ms);
}

Exchanged<OtaReply> SerialClient::ExchangeOta(std::uint32_t first, std::uint32_t second,
                                              std::span<const std::uint8_t> data, std::uint8_t type) {
  const std::lock_guard lock(exchange_mutex_);
  if (!IsOpen(commands_)) {
    return tl::unexpected(kNotSent);
  }
  commands_->Clear(SerialSource::kClearPendingInput);
  if (!SendFrame(EncodeOtaFrame(type, first, second, data))) {
    return tl::unexpected(kNotSent);
  }
  return ReadReply(*commands_, ReplyKind::kOta, Timeouts().ota_ms).map(ReadOtaReply);
}

// A send takes a 16-bit length: a longer frame is truncated to the low 16 bits of its size.
bool SerialClient::SendFrame(std::span<const std::uint8_t> frame) {
  const auto size = static_cast<std::uint16_t>(frame.size());
  const bool sent = commands_->Send(frame.data(), size, 0) >= 0;
  if (tap_ && sent && size > 0) {
    tap_->Pass(WireDirection::kToSensor, frame.first(size));
  }
  return sent;
}

// Collects pieces until the reply is complete or the time-out expires; a failed line ends the wait.
ExchangeResult SerialClient::ReadReply(Source& source, ReplyKind kind, std::uint32_t timeout_ms) {
  using Clock = std::chrono::steady_clock;
  using State = ReplyAssembler::State;
  const auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
  ReplyAssembler assembler(kind);
  State state = State::kIncomplete;
  UdpPacket packet;
  while (state == State::kIncomplete) {
    const auto left = std::clamp(std::chrono::ceil<std::chrono::microseconds>(deadline - Clock::now()),
                                 std::chrono::microseconds(0), kLongestWait);
    const int received = source.Receive(packet, kMaxReplyBlock, 0, static_cast<int>(left.count()));
    if (received < 0) {
      return tl::unexpected(kNotReceived);
    }
    const std::span<const std::uint8_t> piece =
        std::span(packet.data).first(static_cast<std::size_t>(received));
    if (tap_ && received > 0) {
      tap_->Pass(WireDirection::kFromSensor, piece);
    }
    state = assembler.Add(piece);
    // Whatever arrived before the deadline is still read.
    if (left.count() == 0) {
      state = assembler.Finish();
    }
  }
  PassToLog("RECV: ", assembler.block());
  if (state == State::kFailed) {
    return tl::unexpected(kWrongReply);
  }
  return std::vector<std::uint8_t>(assembler.block().begin(), assembler.block().end());
}

void SerialClient::SetWireTap(std::shared_ptr<WireTap> tap) {
  const std::lock_guard lock(exchange_mutex_);
  tap_ = std::move(tap);
}

void SerialClient::SetLogCallback(LogCallback callback, std::function<bool()> wanted) {
  const std::lock_guard lock(log_mutex_);
  log_callback_ = std::move(callback);
  log_wanted_ = std::move(wanted);
}

void SerialClient::PassToLog(const char* prefix, std::span<const std::uint8_t> bytes) {
  const std::lock_guard lock(log_mutex_);
  if (log_callback_ && (!log_wanted_ || log_wanted_())) {
    log_callback_(prefix + HexLine(bytes));
  }
}

}  // namespace quarn::lidar
