#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "simulator/src/command_key.h"

namespace varkel::sim {

/// How a reply is sent. As constructed: at once, complete and correct.
struct ReplyPlan {
  /// Pause between pieces: long enough for a waiting client to read one before the next is sent.
  static constexpr std::chrono::milliseconds kPieceGap{20};

  std::chrono::milliseconds delay{0};
  std::optional<std::size_t> piece_size;  ///< bytes sent at a time
  std::size_t noise_size = 0;             ///< bytes before the header
  std::optional<std::uint8_t> echo;       ///< command code in the reply
  std::optional<std::uint8_t> error;      ///< return code instead of an answer
  std::int64_t length_lie = 0;            ///< added to the announced payload length
  std::optional<std::int64_t> clamp;      ///< the largest raw number that a write stores
  bool silent = false;
  bool closes = false;                     ///< ends the connection during or after the reply
  std::optional<std::size_t> close_after;  ///< bytes sent before closing; nullopt: half of the reply
};

/// The faults that the sensor produces on request. Thread-safe.
class FaultRules {
 public:
  /// Adds a rule, or removes those of a command ("none"). The form is COMMAND=KIND[:ARGUMENT][#N];
  /// the kinds are listed at SimulatedSensor::AddFault. Raises std::invalid_argument with a sentence.
  void Add(const std::string& text);
  void Clear();

  /// Returns the plan for the next exchange of that command, and counts the exchange.
  ReplyPlan Next(const CommandKey& key);
  /// The same for a request inside another one: the rules for every command have already counted it.
  ReplyPlan NextCarried(const CommandKey& key);

 private:
  enum class Kind {
    kLate,
    kSplit,
    kNoise,
    kWrongEcho,
    kError,
    kLyingLength,
    kClamp,
    kSilence,
    kClose,
    kDrop,
    kNone
  };
  struct KindInfo;
  struct Rule {
    std::optional<CommandKey> command;  ///< nullopt: every command
    Kind kind = Kind::kNone;
    std::optional<std::int64_t> argument;
    std::uint64_t only = 0;  ///< 0, or the number of the only exchange concerned
    std::uint64_t seen = 0;  ///< exchanges since the rule was added
  };

  static const KindInfo& FindKind(const std::string& rule, const std::string& name);
  static Rule Parse(const std::string& text);
  ReplyPlan Decide(const CommandKey& key, bool is_carried);
  static bool Matches(const Rule& rule, const CommandKey& key);
  static void Apply(const Rule& rule, const CommandKey& key, ReplyPlan& plan);

  std::mutex mutex_;
  std::vector<Rule> rules_;  // guarded by mutex_
};

}  // namespace varkel::sim
