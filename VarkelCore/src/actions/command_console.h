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

/// Sends commands that were typed by hand and keeps a history of those that were answered. Thread-safe.
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

  /// What came back: an 8-byte header and the payload; of a refused command the header at most.
  struct Answer {
    bool is_answered = false;
    std::vector<std::uint8_t> reply;
  };

  /// The protocol that carries the commands, with the notices that go with it.
  struct Channel {
    std::function<Answer(std::uint8_t code, std::span<const std::uint8_t> payload)> query;  ///< one exchange
    const char* query_failed;
    const char* bad_header;
    const char* bad_payload;
    bool is_serial = false;
    std::size_t tail = 0;  ///< bytes at the end of a reply that are not shown
  };
  static Channel KtcChannel(std::shared_ptr<quarn::lidar::KtcClient> client);
  /// Serial commands; the tag and the length byte of a reply frame are its header. With `over_ktc` the notice
  /// of a failed query sends the user to the byte flow, which shows the KTC frames.
  static Channel SerialChannel(std::shared_ptr<quarn::lidar::SerialExchange> exchange, bool over_ktc);

  explicit CommandConsole(UserReport& report) : report_(report) {}

  /// `command` and each piece of `payload` are one byte in hexadecimal, "0x" allowed; single blanks separate
  /// the pieces, blanks at either end of both texts are dropped. Any other text is refused with a notice and
  /// nothing is sent. `code` becomes the command byte that was sent.
  Outcome Send(const Channel& channel, const std::string& command, const std::string& payload,
               std::uint8_t& code);

  /// Empties the history and the last reply.
  void Forget();

  /// A command and its reply, whole: header and payload, or a serial frame. A refused command has the header
  /// that came.
  struct Exchange {
    bool is_serial = false;
    std::uint8_t command = 0;
    std::vector<std::uint8_t> request;
    std::vector<std::uint8_t> reply;
    bool is_answered = false;
  };
  /// The last one that was sent.
  Exchange last_exchange() const;
  /// What the last reply means by the model's table; empty without one.
  std::vector<DecodedField> DecodedReply(const ExchangeDecoder& decoder) const;
  /// What was asked last and what came of it, when that failed: "0x20 (write Destination IP): refused with
  /// code 3".
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
