#include "libquarn/KtcClient/src/ktc_client.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "libquarn/KtcClient/src/ktc_commands.h"
#include "libquarn/KtcClient/src/sensor_timeouts.h"
#include "libquarn/KtcClient/src/transport_factory.h"
#include "libquarn/Platform/src/byte_order.h"
#include "libquarn/Platform/src/hex_text.h"
#include "libquarn/Platform/src/logger.h"
#include "libquarn/Platform/src/text_number.h"

namespace quarn::lidar {
namespace {

const char kSourceFile[] = "libquarn/KtcClient/src/ktc_client";

constexpr std::chrono::milliseconds kConnectPause{100};
constexpr std::uint32_t kConnectAttemptSeconds = 1;

constexpr std::uint32_t kDrainTimeoutMs = 50;
constexpr std::size_t kDrainBlock = 1500;

// A longer payload is accepted with a warning, since no command is answered with one.
constexpr std::uint32_t kSuspiciousPayload = 10240;

// The announced length is only the sensor's claim, so memory grows with the bytes received.
constexpr std::size_t kPayloadBlock = std::size_t{64} * 1024;

constexpr std::size_t kMaxFrame = 0xFFFF;
constexpr std::size_t kShortCommandText = 4;  // "0x" and the two digits of a command byte

const char* PathOrNull(const std::string& path) {
  return path.empty() ? nullptr : path.c_str();
}

// The offset of the two identifier bytes, or the block's size.
std::size_t FindHeader(std::span<const std::uint8_t> block, const GeneralKtcParser& parser) {
  const std::array<std::uint8_t, 2> identifier = {parser.GetHeaderIdentifier0(),
                                                  parser.GetHeaderIdentifier1()};
  const auto found = std::search(block.begin(), block.end(), identifier.begin(), identifier.end());
  return static_cast<std::size_t>(found - block.begin());
}

}  // namespace

struct KtcClient::Reply {
  std::array<std::uint8_t, kMaxKtcHeaderSize> header{};
  std::size_t header_size = 0;  // as far as it was read
  std::uint32_t payload_length = 0;
  bool peer_had_left = false;  // before the request
  std::vector<std::uint8_t> payload;

  std::span<const std::uint8_t> Header() const { return std::span(header).first(header_size); }
};

KtcClient::KtcClient(std::string lidar_ip, std::uint16_t lidar_port, bool auto_receive,
                     std::uint32_t client_type, std::uint8_t protocol_version, std::string cert_path,
                     std::string private_key_path, std::string ca_path, std::uint32_t receive_timeout_ms,
                     std::uint32_t send_timeout_ms, float connect_timeout_s, std::uint16_t local_port,
                     const KtcLimits& limits)
    : client_type_(client_type),
      parser_(protocol_version),
      lidar_port_(lidar_port),
      local_port_(local_port),
      auto_receive_(auto_receive),
      cert_path_(std::move(cert_path)),
      private_key_path_(std::move(private_key_path)),
      ca_path_(std::move(ca_path)),
      configured_receive_timeout_ms_(receive_timeout_ms),
      configured_send_timeout_ms_(send_timeout_ms),
      connect_timeout_s_(connect_timeout_s),
      limits_(limits),
      current_receive_timeout_ms_(receive_timeout_ms),
      current_send_timeout_ms_(send_timeout_ms),
      lidar_ip_(std::move(lidar_ip)),
      connect_thread_([this](const std::stop_token& stop) { TryOpen(stop); }) {}

KtcClient::~KtcClient() {
  Interrupt();
}

bool KtcClient::IsOpen() const {
  const std::shared_ptr<ClientBase> transport = Transport();
  return transport && transport->IsOpened();
}

std::shared_ptr<ClientBase> KtcClient::Transport() const {
  const std::lock_guard lock(state_mutex_);
  return transport_;
}

void KtcClient::SetLidarIp(std::string lidar_ip) {
  const std::lock_guard lock(state_mutex_);
  lidar_ip_ = std::move(lidar_ip);
}

std::string KtcClient::LidarIp() const {
  const std::lock_guard lock(state_mutex_);
  return lidar_ip_;
}

void KtcClient::Interrupt() {
  connect_thread_.request_stop();
  if (const std::shared_ptr<ClientBase> transport = Transport()) {
    transport->Interrupt();
  }
}

// ---- Connect thread

void KtcClient::TryOpen(const std::stop_token& stop) {
  const auto start = Clock::now();
  const std::optional<std::string> lidar_ip = WaitForLidarIp(stop, start);
  if (!lidar_ip) {
    return;
  }
  QUARN_LOG(log_lib::kProgress, "KtcClient::KtcClient() %s %u", lidar_ip->c_str(), unsigned{lidar_port_});
  if (const std::shared_ptr<ClientBase> transport = CreateTransport(client_type_)) {
    {
      const std::lock_guard lock(state_mutex_);
      transport_ = transport;
    }
    ConnectTransport(stop, *transport, *lidar_ip, start);
  }
  FinishConnect(stop);
}

std::optional<std::string> KtcClient::WaitForLidarIp(const std::stop_token& stop, Clock::time_point start) {
  if (LidarIp().empty()) {
    QUARN_LOG(log_lib::kWarning,
              "KtcClient::KtcClient() lidar_ip_ is empty, wait recv could point to get lidar ip");
  }
  for (;;) {
    if (std::string lidar_ip = LidarIp(); !lidar_ip.empty()) {
      return lidar_ip;
    }
    if (stop.stop_requested()) {
      QUARN_LOG(log_lib::kWarning, "ktc connect exit 1");
      return std::nullopt;
    }
    if (IsConnectTimeOver(start)) {
      QUARN_LOG(log_lib::kWarning, "ktc connect : get lidar ip timeout");
      return std::nullopt;
    }
    Pause(stop);
  }
}

void KtcClient::ConnectTransport(const std::stop_token& stop, ClientBase& transport,
                                 const std::string& lidar_ip, Clock::time_point start) {
  const bool with_paths = client_type_ == kTlsClient;
  while (!stop.stop_requested()) {
    if (transport.TryOpen(local_port_, lidar_ip, lidar_port_, auto_receive_,
                          with_paths ? PathOrNull(cert_path_) : nullptr,
                          with_paths ? PathOrNull(private_key_path_) : nullptr,
                          with_paths ? PathOrNull(ca_path_) : nullptr, kConnectAttemptSeconds) ||
        IsConnectTimeOver(start)) {
      return;
    }
    Pause(stop);
  }
}

void KtcClient::FinishConnect(const std::stop_token& stop) {
  const std::shared_ptr<ClientBase> transport = Transport();
  if (stop.stop_requested() || !transport || !transport->IsOpened()) {
    QUARN_LOG(log_lib::kWarning, "ktc connect exit 2");
    return;
  }
  if (configured_receive_timeout_ms_ != 0 && configured_send_timeout_ms_ != 0) {
    QUARN_LOG(log_lib::kProgress, "u32RecvTimeoutMs %u", configured_receive_timeout_ms_);
    QUARN_LOG(log_lib::kProgress, "u32SendTimeoutMs %u", configured_send_timeout_ms_);
    SetCurrentTimeouts(configured_receive_timeout_ms_, configured_send_timeout_ms_);
  }
  QUARN_LOG(log_lib::kProgress, "ktc connect success");
}

void KtcClient::Pause(const std::stop_token& stop) {
  std::unique_lock lock(state_mutex_);
  stopped_.wait_for(lock, stop, kConnectPause, [] { return false; });
}

bool KtcClient::IsConnectTimeOver(Clock::time_point start) const {
  const std::chrono::duration<float> elapsed = Clock::now() - start;
  return connect_timeout_s_ >= 0.0F && elapsed.count() > connect_timeout_s_;
}

// ---- Exchange

int KtcClient::QueryCommand(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& result,
                            std::uint8_t cmd, bool with_header) {
  return Perform(payload, result, cmd, with_header, 0) ? 0 : -1;
}

KtcClient::Result KtcClient::Query(std::span<const std::uint8_t> payload, std::uint8_t cmd,
                                   std::uint32_t receive_timeout_ms) {
  std::vector<std::uint8_t> reply;
  return Perform(payload, reply, cmd, false, receive_timeout_ms).map([&] { return std::move(reply); });
}

tl::expected<void, std::int32_t> KtcClient::Perform(std::span<const std::uint8_t> payload,
                                                    std::vector<std::uint8_t>& result, std::uint8_t cmd,
                                                    bool with_header, std::uint32_t receive_timeout_ms) {
  const std::shared_ptr<ClientBase> transport = Transport();
  if (!transport || !transport->IsOpened()) {
    QUARN_LOG(log_lib::kError, "Client is not open, cannot send command.");
    return tl::unexpected(kNotSent);
  }
  const std::lock_guard lock(command_mutex_);
  const auto start = Clock::now();
  tl::expected<void, std::int32_t> outcome;
  try {
    outcome = ExchangeWhole(*transport, payload, result, cmd, with_header, receive_timeout_ms);
  } catch (const std::exception& error) {  // mainly out of memory
    QUARN_LOG(log_lib::kError, "KtcClient::QueryCommand, %s", error.what());
    last_return_code_ = kNoPayload;
    outcome = tl::unexpected(kNoPayload);
  }
  const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
  QUARN_LOG(log_lib::kTiming, "exec time: %fms",
            static_cast<double>(static_cast<float>(elapsed.count()) / 1000.0F));
  return outcome;
}

tl::expected<void, std::int32_t> KtcClient::ExchangeWhole(ClientBase& transport,
                                                          std::span<const std::uint8_t> payload,
                                                          std::vector<std::uint8_t>& result, std::uint8_t cmd,
                                                          bool with_header,
                                                          std::uint32_t receive_timeout_ms) {
  Reply reply;
  bool ok = Exchange(transport, payload, cmd, receive_timeout_ms, reply);
  if (ok && reply.payload_length > 0) {
    ok = ReadPayload(transport, reply.payload_length, reply);
    if (ok) {
      if (with_header) {
        const auto header = reply.Header();
        reply.payload.insert(reply.payload.begin(), header.begin(), header.end());
      }
      result = std::move(reply.payload);
    }
  } else if (with_header) {
    result.assign(reply.Header().begin(), reply.Header().end());
  }
  if (ok) {
    PassToLog("RECV: ", result);
  } else {
    PassToLog("RECV: ret_code is " + std::to_string(last_return_code_.load()));
  }
  if (ok) return {};
  // The system still accepts a request after the peer has closed the connection, but it never arrives.
  if (reply.peer_had_left) return tl::unexpected(kNotSent);
  const std::int32_t code = last_return_code_;
  return tl::unexpected(code != 0 ? code : kOtherReply);
}

// Sends the request and reads and checks the reply's header.
bool KtcClient::Exchange(ClientBase& transport, std::span<const std::uint8_t> payload, std::uint8_t cmd,
                         std::uint32_t receive_timeout_ms, Reply& reply) {
  std::vector<std::uint8_t> frame;
  parser_.KtcStreamEncode(payload, frame, cmd);
  if (!DrainStaleInput(transport, reply)) {
    return false;
  }
  if (receive_timeout_ms != 0) {
    transport.SetTimeout(receive_timeout_ms, current_send_timeout_ms_);  // the next drain restores it
  }
  if (!SendRequest(transport, frame) || !ReadHeader(transport, reply) || !CheckHeader(reply, cmd)) {
    return false;
  }
  reply.payload_length =
      LoadBigEndian<std::uint32_t>(reply.Header(), parser_.parser()->layout().payload_length);
  return true;
}

// Discards input left unread by an abandoned exchange. False if it does not end.
bool KtcClient::DrainStaleInput(ClientBase& transport, Reply& reply) {
  std::array<std::uint8_t, kDrainBlock> stale;
  const auto limit = Clock::now() + limits_.longest_noise;
  transport.SetTimeout(kDrainTimeoutMs, kDrainTimeoutMs);
  bool ends = true;
  int received = 1;
  while (ends && received > 0) {
    received = Receive(transport, stale);
    ends = Clock::now() < limit;
  }
  reply.peer_had_left = received == 0;
  transport.SetTimeout(current_receive_timeout_ms_, current_send_timeout_ms_);
  if (!ends) {
    QUARN_LOG(log_lib::kWarning, "the sensor sends continuously, the request is not sent.");
    last_return_code_ = kNotSent;
  }
  return ends;
}

bool KtcClient::SendRequest(ClientBase& transport, std::span<const std::uint8_t> frame) {
  // One send takes at most 65535 bytes. Nothing of a longer frame is sent: the sensor would wait for the rest
  // and take the next request for it. An empty frame means an unknown protocol version.
  int sent = 0;
  if (!frame.empty() && frame.size() <= kMaxFrame) {
    sent = transport.Send(frame.data(), static_cast<std::uint16_t>(frame.size()), 0);
  }
  if (tap_ && sent > 0) {
    tap_->Pass(WireDirection::kToSensor, std::span(frame).first(static_cast<std::size_t>(sent)));
  }
  PassToLog("SEND: ", frame);
  if (frame.empty() || !std::cmp_equal(sent, frame.size())) {
    QUARN_LOG(log_lib::kWarning, "send failure, %d.", sent);
    last_return_code_ = kNotSent;
    return false;
  }
  return true;
}

// Skips noise before the header. Never reads more than the header still lacks, so that no byte of the payload
// is consumed.
bool KtcClient::ReadHeader(ClientBase& transport, Reply& reply) {
  const GeneralKtcParser& parser = *parser_.parser();
  std::optional<Clock::time_point> limit;  // set at the first noise
  while (reply.header_size < parser.GetHeaderSize()) {
    const std::span<std::uint8_t> missing =
        std::span(reply.header).subspan(reply.header_size, parser.GetHeaderSize() - reply.header_size);
    const int received = Receive(transport, missing);
    if (received <= 0) {
      last_return_code_ = kNoHeader;
      return false;
    }
    std::span<std::uint8_t> block = missing.first(static_cast<std::size_t>(received));
    if (reply.header_size == 0) {
      const std::size_t noise = FindHeader(block, parser);
      std::shift_left(block.begin(), block.end(), static_cast<std::ptrdiff_t>(noise));
      block = block.first(block.size() - noise);
    }
    reply.header_size += block.size();
    if (reply.header_size == 0) {
      const auto now = Clock::now();
      limit = limit.value_or(now + limits_.longest_noise);
      if (now > *limit) {
        QUARN_LOG(log_lib::kWarning, "the sensor sends continuously, but no reply.");
        last_return_code_ = kNoHeader;
        return false;
      }
    }
  }
  return true;
}

bool KtcClient::CheckHeader(const Reply& reply, std::uint8_t cmd) {
  const GeneralKtcParser& parser = *parser_.parser();
  const std::uint8_t return_code = reply.header[parser.layout().return_code];
  const std::uint8_t returned_cmd = reply.header[parser.layout().cmd];
  if (reply.header[0] == parser.GetHeaderIdentifier0() && reply.header[1] == parser.GetHeaderIdentifier1() &&
      return_code == 0 && returned_cmd == cmd) {
    return true;
  }
  // The two versions' texts differ by a space, by which log readers recognise the version.
  if (parser_.version() == 1) {
    QUARN_LOG(log_lib::kWarning, "KtcClient::QueryCommand, RspCode invalid:%u, return_cmd:%u, cmd:%u",
              unsigned{return_code}, unsigned{returned_cmd}, unsigned{cmd});
  } else {
    QUARN_LOG(log_lib::kWarning, "KtcClient::QueryCommand,RspCode invalid:%u, return_cmd:%u, cmd:%u",
              unsigned{return_code}, unsigned{returned_cmd}, unsigned{cmd});
  }
  last_return_code_ = return_code;
  return false;
}

bool KtcClient::ReadPayload(ClientBase& transport, std::size_t length, Reply& reply) {
  if (length > kSuspiciousPayload) {
    QUARN_LOG(log_lib::kWarning, "KtcClient::QueryCommand, warning, nPayLoadLen too large:%d",
              static_cast<int>(length));
  }
  const std::size_t limit = std::min(length, limits_.largest_payload);
  std::size_t filled = 0;
  std::size_t counted = 0;  // of them before `window`
  auto window = Clock::now();
  while (filled < limit) {
    if (filled == reply.payload.size()) {
      reply.payload.resize(filled + std::min(limit - filled, kPayloadBlock));
    }
    const std::span<std::uint8_t> missing = std::span(reply.payload).subspan(filled);
    const int received = Receive(transport, missing);
    if (received <= 0) {
      last_return_code_ = kNoPayload;
      return false;
    }
    filled += static_cast<std::size_t>(received);
    if (const auto now = Clock::now(); filled < limit && now - window >= limits_.least_bytes_time) {
      if (filled - counted < limits_.least_bytes) {
        QUARN_LOG(log_lib::kWarning, "the sensor's reply arrives too slowly, %u of %u bytes.",
                  static_cast<unsigned>(filled), static_cast<unsigned>(length));
        last_return_code_ = kNoPayload;
        return false;
      }
      counted = filled;
      window = now;
    }
  }
  if (filled < length) {
    QUARN_LOG(log_lib::kWarning, "the sensor's reply is too large, %u bytes.", static_cast<unsigned>(length));
    last_return_code_ = kNoPayload;
    return false;
  }
  return true;
}

int KtcClient::Receive(ClientBase& transport, std::span<std::uint8_t> buffer) {
  const int received = transport.Receive(buffer.data(), static_cast<std::uint32_t>(buffer.size()), 0);
  if (tap_ && received > 0) {
    tap_->Pass(WireDirection::kFromSensor, buffer.first(static_cast<std::size_t>(received)));
  }
  return received;
}

void KtcClient::SetWireTap(std::shared_ptr<WireTap> tap) {
  const std::lock_guard lock(command_mutex_);
  tap_ = std::move(tap);
}

void KtcClient::SetCurrentTimeouts(std::uint32_t receive_ms, std::uint32_t send_ms) {
  const std::shared_ptr<ClientBase> transport = Transport();
  const std::lock_guard lock(command_mutex_);
  current_receive_timeout_ms_ = receive_ms;
  current_send_timeout_ms_ = send_ms;
  if (transport) {
    transport->SetTimeout(receive_ms, send_ms);
  }
}

// ---- Operations built on exchanges

int KtcClient::TransferFile(std::span<const std::uint8_t> data, std::uint32_t code, bool extended,
                            std::atomic<std::uint32_t>& progress) {
  SetCurrentTimeouts(Timeouts().transfer_ms, Timeouts().transfer_ms);
  const std::uint8_t cmd = extended ? kKtcExtensionCmd : static_cast<std::uint8_t>(code);
  std::vector<std::vector<std::uint8_t>> frames;
  parser_.KtcFilestreamSend(data, cmd, frames);
  const int result = SendPieces(frames, code, extended, progress);
  SetCurrentTimeouts(configured_receive_timeout_ms_, configured_send_timeout_ms_);
  return result;
}

int KtcClient::SendPieces(std::span<const std::vector<std::uint8_t>> frames, std::uint32_t code,
                          bool extended, std::atomic<std::uint32_t>& progress) {
  const std::uint8_t cmd = extended ? kKtcExtensionCmd : static_cast<std::uint8_t>(code);
  std::vector<std::uint8_t> payload(extended ? sizeof(code) : 0);
  if (extended) {
    StoreBigEndian(payload, 0, code);
  }
  const std::size_t prefix = payload.size();
  std::vector<std::uint8_t> reply;
  std::uint32_t number = 0;
  for (const std::vector<std::uint8_t>& frame : frames) {
    progress = ++number;
    payload.resize(prefix);
    payload.insert(payload.end(), frame.begin(), frame.end());
    if (QueryCommand(payload, reply, cmd) != 0) {
      return -1;
    }
  }
  return 0;
}

int KtcClient::TransferFileByCmdText(std::span<const std::uint8_t> data, std::string& command_text,
                                     std::atomic<std::uint32_t>& progress) {
  const auto code = static_cast<std::uint32_t>(TextToInt(command_text, 16));
  const int result = TransferFile(data, code, command_text.size() != kShortCommandText, progress);
  command_text.clear();
  return result;
}

int KtcClient::QueryMultiFov(FovAngles& starts, FovAngles& ends, int& count) {
  std::vector<std::uint8_t> reply;
  if (QueryCommand({}, reply, kQueryMultiFovCmd) != 0) {
    return -1;
  }
  count = DecodeMultiFov(reply, starts, ends);
  return 0;
}

int KtcClient::WriteChannelFov(std::uint8_t channel, const FovAngles& starts) {
  std::vector<std::uint8_t> reply;
  return QueryCommand(EncodeChannelFov(channel, starts), reply, kWriteChannelFovCmd);
}

bool KtcClient::KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                                std::int32_t offset, std::int32_t length,
                                std::vector<std::uint8_t>& out) const {
  return parser_.KtcStreamDecode(status, byte, in, offset, length, out);
}

// ---- Log callback

void KtcClient::SetLogCallback(std::function<void(const std::string&)> callback,
                               std::function<bool()> wanted) {
  const std::lock_guard lock(log_mutex_);
  log_callback_ = std::move(callback);
  log_wanted_ = std::move(wanted);
}

void KtcClient::PassToLog(const char* prefix, std::span<const std::uint8_t> bytes) {
  const std::lock_guard lock(log_mutex_);
  if (IsLogWanted()) {
    log_callback_(prefix + HexLine(bytes));
  }
}

void KtcClient::PassToLog(const std::string& line) {
  const std::lock_guard lock(log_mutex_);
  if (IsLogWanted()) {
    log_callback_(line);
  }
}

bool KtcClient::IsLogWanted() const {
  return log_callback_ && (!log_wanted_ || log_wanted_());
}

}  // namespace quarn::lidar
