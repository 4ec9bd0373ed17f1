#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/KtcClient/src/client_base.h"
#include "libquarn/KtcClient/src/exchange_result.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/wire_tap.h"

namespace quarn::lidar {

/// What one exchange takes from a sensor before it fails: a sensor that sends without pause, or without end,
/// would otherwise block its client forever.
struct KtcLimits {
  /// How long it may send what nobody asked for, before a request or before its reply.
  std::chrono::milliseconds longest_noise{5000};
  /// A payload has to bring at least so many bytes in each such time, counted from its header on.
  std::size_t least_bytes = 256;
  std::chrono::milliseconds least_bytes_time{5000};
  /// Payload bytes that are kept; the largest that a sensor sends are logs of a few MiB.
  std::size_t largest_payload = std::size_t{64} * 1024 * 1024;
};

/// Commands one sensor. The connection is made in the background by a thread of the client's own (poll
/// `IsOpen`), once: a connection that breaks shows as failing exchanges until a new client is made.
///
/// Every operation may be called from any thread. Exchanges run one after the other, so that requests and
/// replies of several threads never mix on the wire. Failures are return values; only
/// `TransferFileByCmdText` throws. Whoever runs an operation keeps the client alive until it returns.
class KtcClient {
 public:
  /// Why an exchange failed, besides the sensor's own codes (1 to 255).
  static constexpr std::int32_t kOtherReply =
      -1;                                        ///< the reply answers another command; 0 in `LastReturnCode`
  static constexpr std::int32_t kNoHeader = -2;  ///< the reply's header did not come, or only noise did
  /// The reply's payload did not come whole, came too slowly or is too large.
  static constexpr std::int32_t kNoPayload = -3;
  static constexpr std::int32_t kNotSent = -4;  ///< the request did not go out whole

  /// `client_type`: 0 plain TCP, 1 TLS; others connect nothing. `protocol_version`: 1 or 2. The paths name
  /// PEM files for TLS. Time-outs of an exchange are milliseconds (0 waits without end); the connection is
  /// tried for `connect_timeout_s` seconds, at least once, and without end when that is negative.
  /// `local_port` 0 takes any. An empty `lidar_ip` may be filled in later.
  KtcClient(std::string lidar_ip, std::uint16_t lidar_port, bool auto_receive, std::uint32_t client_type,
            std::uint8_t protocol_version, std::string cert_path, std::string private_key_path,
            std::string ca_path, std::uint32_t receive_timeout_ms, std::uint32_t send_timeout_ms,
            float connect_timeout_s, std::uint16_t local_port, const KtcLimits& limits = {});

  /// Interrupts and joins the connect thread; does not wait for time-outs.
  ~KtcClient();
  KtcClient(const KtcClient&) = delete;
  KtcClient& operator=(const KtcClient&) = delete;

  bool IsOpen() const;

  /// One exchange: 0 on success, else -1 with the reason in `LastReturnCode` (an unopened client leaves it).
  ///
  /// On success `result` becomes the reply's payload, with the header in front of it on request. A reply
  /// without payload gives the header on request and otherwise leaves `result` as it was. A failed exchange
  /// gives the header, as far as it was read, on request; it leaves `result` as it was without one, and
  /// always when the payload failed. `payload` may be the contents of `result`.
  int QueryCommand(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& result, std::uint8_t cmd,
                   bool with_header = false);

  /// One exchange: the reply's payload, or the sensor's code or one of those above. The reply is awaited for
  /// `receive_timeout_ms`, or for the client's own time-out when that is 0. `LastReturnCode` may meanwhile be
  /// another thread's.
  ExchangeResult Query(std::span<const std::uint8_t> payload, std::uint8_t cmd,
                       std::uint32_t receive_timeout_ms = 0);

  /// Sends `data` as numbered pieces of 1024 bytes, each answered before the next goes out, with time-outs of
  /// a minute: 0, or -1 at the first piece that fails. The command is the low byte of `code`; `extended`
  /// sends command 0xFF and puts the whole code, big-endian, in front of every piece. `progress` is the
  /// number of the piece under way, from 1. Version 2 frames have no pieces: nothing is sent and 0 returned.
  int TransferFile(std::span<const std::uint8_t> data, std::uint32_t code, bool extended,
                   std::atomic<std::uint32_t>& progress);

  /// `TransferFile` with the code as hexadecimal text, extended unless the text has four characters ("0x0A").
  /// Empties the text afterwards. Throws as `TextToInt` does, with the text kept, before anything is sent.
  int TransferFileByCmdText(std::span<const std::uint8_t> data, std::string& command_text,
                            std::atomic<std::uint32_t>& progress);

  /// Reads the fields of view in degrees: 0 or -1. `count` is how many the sensor sent (0 to 5); angles
  /// beyond them keep their values, all do on failure.
  int QueryMultiFov(FovAngles& starts, FovAngles& ends, int& count);

  /// Writes the five start angles of a channel, in degrees: 0 or -1.
  int WriteChannelFov(std::uint8_t channel, const FovAngles& starts);

  bool KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                       std::int32_t offset, std::int32_t length, std::vector<std::uint8_t>& out) const;

  /// `callback` gets a "SEND: " and a "RECV: " line an exchange, on the thread of the exchange; lines are
  /// only built while `wanted`, if given, answers true. Neither may throw or call this client. When the call
  /// returns, the previous callback is no longer running.
  void SetLogCallback(std::function<void(const std::string&)> callback, std::function<bool()> wanted = {});

  /// `tap` sees every byte of later exchanges, TLS or not; null takes it away.
  void SetWireTap(std::shared_ptr<WireTap> tap);

  /// Why the last failed exchange failed.
  std::int32_t LastReturnCode() const { return last_return_code_; }

  /// The baud rate of the serial line on the sensor's side; kept for the client's owner.
  void SetSerialFastBaudRate(std::uint32_t baud_rate) { serial_fast_baud_rate_ = baud_rate; }
  std::uint32_t SerialFastBaudRate() const { return serial_fast_baud_rate_; }
  std::uint32_t SerialDefaultBaudRate() const { return serial_default_baud_rate_; }

  /// Provides the address to a client that was created without one.
  void SetLidarIp(std::string lidar_ip);

  /// Shuts the client down for good: the connect thread ends, and running and later exchanges fail at once.
  void Interrupt();

 private:
  using Clock = std::chrono::steady_clock;
  struct Reply;

  // Connect thread.
  void TryOpen(const std::stop_token& stop);
  std::optional<std::string> WaitForLidarIp(const std::stop_token& stop, Clock::time_point start);
  void ConnectTransport(const std::stop_token& stop, ClientBase& transport, const std::string& lidar_ip,
                        Clock::time_point start);
  void FinishConnect(const std::stop_token& stop);
  void Pause(const std::stop_token& stop);
  bool IsConnectTimeOver(Clock::time_point start) const;

  std::string LidarIp() const;
  std::shared_ptr<ClientBase> Transport() const;

  Exchanged<void> Perform(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& result,
                          std::uint8_t cmd, bool with_header, std::uint32_t receive_timeout_ms);

  // With command_mutex_ held.
  Exchanged<void> ExchangeWhole(ClientBase& transport, std::span<const std::uint8_t> payload,
                                std::vector<std::uint8_t>& result, std::uint8_t cmd, bool with_header,
                                std::uint32_t receive_timeout_ms);
  bool Exchange(ClientBase& transport, std::span<const std::uint8_t> payload, std::uint8_t cmd,
                std::uint32_t receive_timeout_ms, Reply& reply);
  bool DrainStaleInput(ClientBase& transport, Reply& reply);
  bool SendRequest(ClientBase& transport, std::span<const std::uint8_t> frame);
  bool ReadHeader(ClientBase& transport, Reply& reply);
  bool CheckHeader(const Reply& reply, std::uint8_t cmd);
  bool ReadPayload(ClientBase& transport, std::size_t length, Reply& reply);
  int Receive(ClientBase& transport, std::span<std::uint8_t> buffer);

  void SetCurrentTimeouts(std::uint32_t receive_ms, std::uint32_t send_ms);
  int SendPieces(std::span<const std::vector<std::uint8_t>> frames, std::uint32_t code, bool extended,
                 std::atomic<std::uint32_t>& progress);
  void PassToLog(const char* prefix, std::span<const std::uint8_t> bytes);
  void PassToLog(const std::string& line);
  bool IsLogWanted() const;

  // Self-synchronised.
  std::atomic<std::uint32_t> serial_fast_baud_rate_{3125000};
  const std::uint32_t serial_default_baud_rate_ = 115200;
  std::atomic<std::int32_t> last_return_code_{0};

  std::mutex command_mutex_;  // held for the whole of an exchange

  // Constant.
  const std::uint32_t client_type_;
  const KtcParser parser_;
  const std::uint16_t lidar_port_;
  const std::uint16_t local_port_;
  const bool auto_receive_;
  const std::string cert_path_;
  const std::string private_key_path_;
  const std::string ca_path_;
  const std::uint32_t configured_receive_timeout_ms_;
  const std::uint32_t configured_send_timeout_ms_;
  const float connect_timeout_s_;
  const KtcLimits limits_;

  // Guarded by command_mutex_.
  std::shared_ptr<WireTap> tap_;
  std::uint32_t current_receive_timeout_ms_;  // what the transport was last given
  std::uint32_t current_send_timeout_ms_;

  // Guarded by state_mutex_.
  mutable std::mutex state_mutex_;
  std::condition_variable_any stopped_;  // only the stop of the connect thread wakes it
  std::string lidar_ip_;
  std::shared_ptr<ClientBase> transport_;

  // Guarded by log_mutex_, which is held while they run.
  std::mutex log_mutex_;
  std::function<void(const std::string&)> log_callback_;
  std::function<bool()> log_wanted_;

  std::jthread connect_thread_;  // last: everything else is made before it starts
};

}  // namespace quarn::lidar
