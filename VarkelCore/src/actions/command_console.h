#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/tasks/user_report.h"
#include "VarkelCore/src/values/exchange_decoder.h"
#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Source/src/serial_exchange.h"

namespace varkel {

/// Sends commands typed by hand and keeps a history of those that were answered. Thread-safe.
class CommandConsole {
 public:
  struct Record {
    std::string time;  ///< local, "yyyy-MM-dd HH:mm:ss"
    std::string command;
    std::string payload;
  };
  enum class Outcome { kRefused, kFailed, kSent };
  static constexpr std::size_t kHistorySize = 10;
  static constexpr std::size_t kShownPayload = 1024;  ///< bytes of a reply payload that are shown

  /// The protocol that carries the commands, and its notices.
  struct Channel {
    /// Performs one exchange: 0 on success. The reply is an 8-byte header and the payload.
    std::function<int(std::uint8_t code, std::span<const std::uint8_t> payload,
                      std::vector<std::uint8_t>& reply)>
        query;
    const char* query_failed;
    const char* bad_header;
    const char* bad_payload;
    bool is_serial = false;
    std::size_t tail = 0;  ///< bytes at the end of a reply that are not shown
  };
  static Channel KtcChannel(std::shared_ptr<quarn::lidar::KtcClient> client);
  /// Serial commands; the tag and the length byte of a reply frame count as its header. With `over_ktc` the
  /// notice of a failed query points the user to the byte log, which shows the KTC frames.
  static Channel SerialChannel(std::shared_ptr<quarn::lidar::SerialExchange> exchange, bool over_ktc);

  explicit CommandConsole(UserReport& report) : report_(report) {}

  /// `command` and each item of `payload` are one byte in hexadecimal, "0x" allowed; items are separated by
  /// single spaces, and spaces at either end of both texts are ignored. Any other text is refused with a
  /// notice and nothing is sent. Sets `code` to the command byte that was sent.
  Outcome Send(const Channel& channel, const std::string& command, const std::string& payload,
               std::uint8_t& code);

  /// Clears the history and the last reply.
  void Forget();

  /// A command and its complete reply: header and payload, or a serial frame. For a refused command the reply
  /// is the header that came.
  struct Exchange {
    bool is_serial = false;
    std::uint8_t command = 0;
    std::vector<std::uint8_t> request;
    std::vector<std::uint8_t> reply;
    bool is_answered = false;
  };
  /// The last exchange.
  Exchange last_exchange() const;
  /// The last reply decoded with the model's table; empty if there is none.
  std::vector<DecodedField> DecodedReply(const ExchangeDecoder& decoder) const;
  /// If the last command failed, the command and the reason: "0x20 (write Destination IP): refused with code
  /// 3".
  std::string FailureText(const ExchangeDecoder& decoder) const;

  std::string return_header() const;  ///< the last reply, upper-case hexadecimal
  std::string return_payload() const;
  std::vector<Record> history() const;  ///< newest first

 private:
  void ShowReply(const std::vector<std::uint8_t>& reply);
  void SetReplyTexts(std::string header, std::string payload);

  UserReport& report_;
  mutable std::mutex mutex_;  // guards what follows
  std::string return_header_;
  std::string return_payload_;
  std::deque<Record> history_;
  Exchange last_exchange_;
};

}  // namespace varkel
