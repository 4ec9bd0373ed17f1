#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "simulator/src/command_handler.h"
#include "simulator/src/exchange_log.h"
#include "simulator/src/fault_rules.h"

namespace varkel::sim {

/// Answers as a recorded sensor did: each request, by its command and payload, gets the recorded answers to
/// that request in their order, and the last of them ever after. What the recorded sensor left unanswered,
/// broke off or answered with another command stays so. The nonce and CRC of a carried serial frame, which
/// are fresh in every request, do not count. Of several sensors in a recording the first is replayed.
/// Thread-safe.
class Replay {
 public:
  enum class Pace { kAtOnce, kRecorded };

  /// Raises std::runtime_error with a sentence for a recording without KTC exchanges. A recording that is cut
  /// off or damaged is used as far as it goes.
  Replay(std::istream& recording, Pace pace);

  /// What was never asked while recording gets the code for unknown commands, except the two commands with
  /// which clients look for a sensor.
  Reply Answer(const ReceivedRequest& request, ReplyPlan& plan);

  /// "command 0x20, payload c0 a8: 3 times": what was asked and not recorded, up to 1000 different requests.
  std::vector<std::string> Unseen() const;

  const std::string& sensor() const { return sensor_; }  ///< address and port
  std::size_t exchanges() const { return exchanges_; }
  /// What is wrong with the recording; empty for a whole one.
  const std::string& fault() const { return fault_; }

 private:
  using Key = std::pair<std::uint8_t, std::vector<std::uint8_t>>;
  struct Recorded {
    bool is_silent = false;
    Reply reply;
    std::uint8_t echo = 0;
    std::int64_t missing = 0;  // payload bytes that were announced and did not come
    std::chrono::milliseconds delay{0};
    std::uint64_t times = 1;  // in a row
  };
  struct Answers {
    std::vector<Recorded> list;
    std::size_t next = 0;
    std::uint64_t used = 0;  // times that list[next] was given
  };

  static Key KeyOf(std::uint8_t command, std::vector<std::uint8_t> payload);

  const Pace pace_;
  std::string sensor_;
  std::string fault_;
  std::size_t exchanges_ = 0;
  mutable std::mutex mutex_;  // guards what follows
  std::map<Key, Answers> answers_;
  std::map<Key, std::uint64_t> unseen_;
};

}  // namespace varkel::sim
