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
#include "libquarn/KtcClient/src/ktc_client.h"
#include "libquarn/Source/src/serial_exchange.h"

namespace varkel {

/// Sends commands typed by hand and remembers the last ones. Thread-safe.
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

  /// How commands travel, and what the user is told when one can't.
  struct Road {
    /// One exchange: 0, or a failure. The reply is 8 bytes of header and the payload.
    std::function<int(std::uint8_t code, std::span<const std::uint8_t> payload,
                      std::vector<std::uint8_t>& reply)>
        query;
    const char* query_failed;
    const char* bad_header;
    const char* bad_payload;
  };
  static Road OverKtc(std::shared_ptr<quarn::lidar::KtcClient> client);
  /// Serial commands; `behind_ktc` tells the user where to look after a failure. The tag and the length byte
  /// of a reply frame are its header.
  static Road OverSerial(std::shared_ptr<quarn::lidar::SerialExchange> exchange, bool behind_ktc);

  explicit CommandConsole(UserReport& report) : report_(report) {}

  /// `command` and each blank-separated piece of `payload` are hexadecimal, "0x" allowed. A text that can't
  /// be read is refused with a notice and nothing is sent. `code` is the command byte that was sent.
  Outcome Send(const Road& road, const std::string& command, const std::string& payload, std::uint8_t& code);

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
};

}  // namespace varkel
