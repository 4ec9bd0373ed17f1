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
#include <tl/expected.hpp>
#include <vector>

#include "libquarn/KtcClient/src/channel_fov.h"
#include "libquarn/KtcClient/src/client_base.h"
#include "libquarn/KtcClient/src/ktc_parser.h"
#include "libquarn/Platform/src/wire_tap.h"

namespace quarn::lidar {

/// Limits of one exchange: without them a sensor that sends continuously or endlessly would block its client
/// forever.
struct KtcLimits {
  /// How long the sensor may send unsolicited bytes, before a request or before its reply.
  std::chrono::milliseconds longest_noise{5000};
  /// At least `least_bytes` of a payload must arrive in each period of `least_bytes_time`, counted from its
  /// header on.
  std::size_t least_bytes = 256;
  std::chrono::milliseconds least_bytes_time{5000};
  /// Maximum payload size in bytes; the largest payloads that sensors send are logs of a few MiB.
  std::size_t largest_payload = std::size_t{64} * 1024 * 1024;
};

/// Commands one sensor. The connection is established in the background by the client's own thread (poll
/// `IsOpen`), only once: after it breaks, exchanges fail until a new client is created.
///
/// Every operation may be called from any thread. Exchanges are serialised, so that requests and replies of
/// several threads never mix on the wire. Failures are return values; only `TransferFileByCmdText` throws.
/// Callers keep the client alive until the operation returns.
class KtcClient {
 public:
  /// Why an exchange failed, in addition to the sensor's own codes (1 to 255).
  /// The reply answers another command; 0 in `LastReturnCode`.
  static constexpr std::int32_t kOtherReply = -1;
  static constexpr std::int32_t kNoHeader = -2;  ///< no reply header came, or only noise
  /// The reply's payload was incomplete, too slow or too large.
  static constexpr std::int32_t kNoPayload = -3;
  static constexpr std::int32_t kNotSent = -4;  ///< the request was not sent completely

  /// `client_type`: 0 plain TCP, 1 TLS; others never connect. `protocol_version`: 1 or 2. The paths name PEM
  /// files for TLS. Time-outs of an exchange are in milliseconds (0 waits forever); connecting is tried for
  /// `connect_timeout_s` seconds, at least once, and forever if that is negative. `local_port` 0 means any.
  /// An empty `lidar_ip` can be set later (SetLidarIp).
  KtcClient(std::string lidar_ip, std::uint16_t lidar_port, bool auto_receive, std::uint32_t client_type,
            std::uint8_t protocol_version, std::string cert_path, std::string private_key_path,
            std::string ca_path, std::uint32_t receive_timeout_ms, std::uint32_t send_timeout_ms,
            float connect_timeout_s, std::uint16_t local_port, const KtcLimits& limits = {});

  /// Interrupts and joins the connect thread; does not wait for time-outs.
  ~KtcClient();
  KtcClient(const KtcClient&) = delete;
  KtcClient& operator=(const KtcClient&) = delete;

  bool IsOpen() const;

  /// Performs one exchange: 0 on success, otherwise -1 with the reason in `LastReturnCode` (unchanged if the
  /// client is not open).
  ///
  /// On success `result` becomes the reply's payload, preceded by the header if `with_header` is set. If the
  /// reply has no payload, `result` becomes the header if `with_header` is set and is otherwise unchanged. On
  /// failure `result` becomes the header, as far as it was read, if `with_header` is set; it is unchanged if
  /// no header came or if the payload failed. `payload` may be the contents of `result`.
  int QueryCommand(std::span<const std::uint8_t> payload, std::vector<std::uint8_t>& result, std::uint8_t cmd,
                   bool with_header = false);

  /// The result of an exchange: the reply's payload, or the code of the failure: the sensor's, or one of
  /// those above.
  using Result = tl::expected<std::vector<std::uint8_t>, std::int32_t>;

  /// Performs one exchange. Waits for the reply for `receive_timeout_ms`, or for the client's own time-out if
  /// that is 0. `LastReturnCode` may by then belong to another thread's exchange.
  Result Query(std::span<const std::uint8_t> payload, std::uint8_t cmd, std::uint32_t receive_timeout_ms = 0);

  /// Sends `data` in numbered pieces of 1024 bytes, each answered before the next is sent, with time-outs of
  /// a minute: 0, or -1 at the first piece that fails. The command is the low byte of `code`; with `extended`
  /// it is 0xFF, and the whole code, big-endian, precedes every piece. `progress` is set to the number of the
  /// current piece, from 1. Version 2 frames have no pieces: nothing is sent and 0 is returned.
  int TransferFile(std::span<const std::uint8_t> data, std::uint32_t code, bool extended,
                   std::atomic<std::uint32_t>& progress);

  /// `TransferFile` with the code as hexadecimal text, extended unless the text has four characters ("0x0A").
  /// Clears the text afterwards. If the text is not a number, throws as `TextToInt` does before anything is
  /// sent, and keeps the text.
  int TransferFileByCmdText(std::span<const std::uint8_t> data, std::string& command_text,
                            std::atomic<std::uint32_t>& progress);

  /// Reads the fields of view in degrees: 0 or -1. Sets `count` to the number that the sensor sent (0 to 5);
  /// the other angles keep their values, and on failure all do.
  int QueryMultiFov(FovAngles& starts, FovAngles& ends, int& count);

  /// Writes the five start angles of a channel, in degrees: 0 or -1.
  int WriteChannelFov(std::uint8_t channel, const FovAngles& starts);

  bool KtcStreamDecode(std::uint8_t status, std::uint8_t byte, const std::vector<std::uint8_t>& in,
                       std::int32_t offset, std::int32_t length, std::vector<std::uint8_t>& out) const;

  /// `callback` receives a "SEND: " and a "RECV: " line for each exchange, on the thread of the exchange; if
  /// `wanted` is given, only while it returns true. Neither may throw or call this client. Once this function
  /// returns, the previous callback is no longer running.
  void SetLogCallback(std::function<void(const std::string&)> callback, std::function<bool()> wanted = {});

  /// `tap` sees every byte of later exchanges, decrypted in the case of TLS; null removes it.
  void SetWireTap(std::shared_ptr<WireTap> tap);

  /// Why the last failed exchange failed.
  std::int32_t LastReturnCode() const { return last_return_code_; }

  /// The baud rate of the serial line on the sensor's side; kept for the client's owner.
  void SetSerialFastBaudRate(std::uint32_t baud_rate) { serial_fast_baud_rate_ = baud_rate; }
  std::uint32_t SerialFastBaudRate() const { return serial_fast_baud_rate_; }
  std::uint32_t SerialDefaultBaudRate() const { return serial_default_baud_rate_; }

  /// Sets the address of a client that was created without one.
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

  tl::expected<void, std::int32_t> Perform(std::span<const std::uint8_t> payload,
                                           std::vector<std::uint8_t>& result, std::uint8_t cmd,
                                           bool with_header, std::uint32_t receive_timeout_ms);

  // With command_mutex_ held.
  tl::expected<void, std::int32_t> ExchangeWhole(ClientBase& transport, std::span<const std::uint8_t> payload,
                                                 std::vector<std::uint8_t>& result, std::uint8_t cmd,
                                                 bool with_header, std::uint32_t receive_timeout_ms);
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
  std::uint32_t current_receive_timeout_ms_;  // last set on the transport
  std::uint32_t current_send_timeout_ms_;

  // Guarded by state_mutex_.
  mutable std::mutex state_mutex_;
  std::condition_variable_any stopped_;  // woken only by stopping the connect thread
  std::string lidar_ip_;
  std::shared_ptr<ClientBase> transport_;

  // Guarded by log_mutex_, which is held while they run.
  std::mutex log_mutex_;
  std::function<void(const std::string&)> log_callback_;
  std::function<bool()> log_wanted_;

  std::jthread connect_thread_;  // last: starts when everything else is constructed
};

}  // namespace quarn::lidar
