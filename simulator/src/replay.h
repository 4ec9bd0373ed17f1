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

/// Answers as a recorded sensor did: each request, identified by command and payload, gets the recorded
/// answers in order, and then the last one every time. Missing, cut-off and wrong replies are reproduced. The
/// nonce and CRC of a serial frame inside a request, which are different every time, are ignored. If a
/// recording has several sensors, the first one is replayed. Thread-safe.
class Replay {
 public:
  enum class Pace { kAtOnce, kRecorded };

  /// Raises std::runtime_error with a sentence for a recording without KTC exchanges. A truncated or damaged
  /// recording is used as far as possible.
  Replay(std::istream& recording, Pace pace);

  /// A request that was never recorded gets the code for unknown commands, except the two commands with which
  /// clients check for a sensor.
  Reply Answer(const ReceivedRequest& request, ReplyPlan& plan);

  /// Requests that were not recorded, up to 1000 different ones, as "command 0x20, payload c0 a8: 3 times".
  std::vector<std::string> Unrecorded() const;

  const std::string& sensor() const { return sensor_; }  ///< address and port
  std::size_t exchanges() const { return exchanges_; }
  /// What is wrong with the recording; empty if nothing is.
  const std::string& fault() const { return fault_; }

 private:
  using Key = std::pair<std::uint8_t, std::vector<std::uint8_t>>;
  struct Recorded {
    bool is_silent = false;
    Reply reply;
    std::uint8_t echo = 0;
    std::int64_t missing = 0;  // payload bytes that were announced but did not arrive
    std::chrono::milliseconds delay{0};
    std::uint64_t times = 1;  // in a row
  };
  struct Answers {
    std::vector<Recorded> list;
    std::size_t next = 0;
    std::uint64_t used = 0;  // how often list[next] was used
  };

  static Key KeyOf(std::uint8_t command, std::vector<std::uint8_t> payload);

  const Pace pace_;
  std::string sensor_;
  std::string fault_;
  std::size_t exchanges_ = 0;
  mutable std::mutex mutex_;  // guards the members below
  std::map<Key, Answers> answers_;
  std::map<Key, std::uint64_t> unseen_;
};

}  // namespace varkel::sim
