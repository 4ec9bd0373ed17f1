#include "simulator/src/fault_rules.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "libquarn/Source/src/sensor_requests.h"

namespace varkel::sim {
namespace {

constexpr std::int64_t kDefaultPieceSize = 1;
constexpr std::int64_t kDefaultNoiseSize = 5;
constexpr std::int64_t kDefaultError = 1;

constexpr std::int64_t kLongestDelay = 600'000;
constexpr std::int64_t kMostBytes = 1'000'000;
constexpr std::int64_t kBiggestLie = 0x7FFFFFFF;
constexpr std::size_t kWholeReply = std::numeric_limits<std::size_t>::max();

enum class Argument { kNone, kOptional, kRequired };

[[noreturn]] void Refuse(const std::string& rule, const std::string& reason) {
  throw std::invalid_argument("The fault rule \"" + rule + "\" " + reason + ".");
}

/// Decimal, or hexadecimal after "0x".
std::optional<std::int64_t> Number(std::string_view digits) {
  const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  if (hexadecimal) digits.remove_prefix(2);
  std::int64_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, value, hexadecimal ? 16 : 10);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return value;
}

/// Cuts `text` at the first `separator` and returns what follows it; nullopt if there is none.
std::optional<std::string> CutAt(std::string& text, char separator) {
  const std::size_t position = text.find(separator);
  if (position == std::string::npos) return std::nullopt;
  std::string tail = text.substr(position + 1);
  text.resize(position);
  return tail;
}

/// "ldcmd:ITEM", "ldcmd-get:ITEM", "ldcmd-set:ITEM", "ota:TYPE", or a KTC command as in a table.
std::optional<CommandKey> KeyOfRule(std::string command) {
  struct Target {
    const char* name;
    CommandFamily family;
    std::optional<std::uint32_t> request;
  };
  static const std::vector<Target> kTargets = {
      {"ldcmd", CommandFamily::kSerialCommand, std::nullopt},
      {"ldcmd-get", CommandFamily::kSerialCommand, quarn::lidar::kGetRequest},
      {"ldcmd-set", CommandFamily::kSerialCommand, quarn::lidar::kSetRequest},
      {"ota", CommandFamily::kFirmware, std::nullopt},
  };
  const std::optional<std::string> code = CutAt(command, ':');
  if (!code) {
    try {
      return KeyOfText(command);
    } catch (const std::exception&) {
      return std::nullopt;
    }
  }
  const auto target = std::find_if(kTargets.begin(), kTargets.end(),
                                   [&](const Target& candidate) { return command == candidate.name; });
  const std::optional<std::int64_t> number = Number(*code);
  if (target == kTargets.end() || !number || *number < 0 || *number > 0xFF) return std::nullopt;
  return CommandKey{static_cast<std::uint8_t>(*number), target->request, target->family};
}

}  // namespace

struct FaultRules::KindInfo {
  const char* name;
  Kind kind;
  Argument argument;
  std::int64_t min;
  std::int64_t max;
};

const FaultRules::KindInfo& FaultRules::FindKind(const std::string& rule, const std::string& name) {
  static const std::vector<KindInfo> kKinds = {
      {"late", Kind::kLate, Argument::kRequired, 0, kLongestDelay},
      {"split", Kind::kSplit, Argument::kOptional, 1, kMostBytes},
      {"noise", Kind::kNoise, Argument::kOptional, 1, kMostBytes},
      {"wrong-echo", Kind::kWrongEcho, Argument::kOptional, 0, 0xFF},
      {"error", Kind::kError, Argument::kOptional, 1, 0xFF},
      {"lying-length", Kind::kLyingLength, Argument::kRequired, -kBiggestLie, kBiggestLie},
      {"clamp", Kind::kClamp, Argument::kRequired, -kBiggestLie, kBiggestLie},
      {"silence", Kind::kSilence, Argument::kNone, 0, 0},
      {"close", Kind::kClose, Argument::kOptional, 0, kMostBytes},
      {"pull", Kind::kClose, Argument::kOptional, 0, kMostBytes},
      {"drop", Kind::kDrop, Argument::kNone, 0, 0},
      {"none", Kind::kNone, Argument::kNone, 0, 0},
  };
  const auto found =
      std::find_if(kKinds.begin(), kKinds.end(), [&](const KindInfo& info) { return name == info.name; });
  if (found != kKinds.end()) return *found;
  std::string known;
  for (const KindInfo& info : kKinds) known += std::string(known.empty() ? "" : ", ") + info.name;
  Refuse(rule, "has an unknown kind; the kinds are " + known);
}

FaultRules::Rule FaultRules::Parse(const std::string& text) {
  std::string command = text;
  std::optional<std::string> kind = CutAt(command, '=');
  if (!kind || command.empty()) Refuse(text, "does not have the form COMMAND=KIND[:ARGUMENT][#N]");
  const std::optional<std::string> only = CutAt(*kind, '#');
  const std::optional<std::string> argument = CutAt(*kind, ':');
  const KindInfo& info = FindKind(text, *kind);

  Rule rule;
  rule.kind = info.kind;
  if (command != "*") {
    rule.command = KeyOfRule(command);
    if (!rule.command) {
      Refuse(text,
             "needs a number as its command, on its own or after ldcmd:, ldcmd-get:, ldcmd-set: or ota:");
    }
  }
  if (argument.has_value() ? info.argument == Argument::kNone : info.argument == Argument::kRequired) {
    Refuse(text, argument ? "takes no argument" : "lacks its argument");
  }
  if (argument) {
    rule.argument = Number(*argument);
    if (!rule.argument || *rule.argument < info.min || *rule.argument > info.max) {
      Refuse(text, "needs an argument from " + std::to_string(info.min) + " to " + std::to_string(info.max));
    }
  }
  if (only) {
    const std::optional<std::int64_t> number = Number(*only);
    if (!number || *number < 1) Refuse(text, "needs a number of at least 1 after \"#\"");
    rule.only = static_cast<std::uint64_t>(*number);
  }
  return rule;
}

void FaultRules::Add(const std::string& text) {
  Rule rule = Parse(text);
  const std::lock_guard<std::mutex> lock(mutex_);
  std::erase_if(rules_, [&](const Rule& other) {
    return other.command == rule.command && (rule.kind == Kind::kNone || other.kind == rule.kind);
  });
  if (rule.kind != Kind::kNone) rules_.push_back(rule);
}

void FaultRules::Clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  rules_.clear();
}

bool FaultRules::Matches(const Rule& rule, const CommandKey& key) {
  if (!rule.command) return true;
  // A rule for the plain command 0xFF applies to all four-byte commands, one for an item to both get and set.
  return rule.command->family == key.family && rule.command->code == key.code &&
         (!rule.command->extended_code || rule.command->extended_code == key.extended_code);
}

void FaultRules::Apply(const Rule& rule, const CommandKey& key, ReplyPlan& plan) {
  switch (rule.kind) {
    case Kind::kLate:
      plan.delay = std::chrono::milliseconds(rule.argument.value_or(0));
      break;
    case Kind::kSplit:
      plan.piece_size = static_cast<std::size_t>(rule.argument.value_or(kDefaultPieceSize));
      break;
    case Kind::kNoise:
      plan.noise_size = static_cast<std::size_t>(rule.argument.value_or(kDefaultNoiseSize));
      break;
    case Kind::kWrongEcho:
      plan.echo = static_cast<std::uint8_t>(rule.argument.value_or(key.code + 1));
      break;
    case Kind::kError:
      plan.error = static_cast<std::uint8_t>(rule.argument.value_or(kDefaultError));
      break;
    case Kind::kLyingLength:
      plan.length_lie = rule.argument.value_or(0);
      break;
    case Kind::kClamp:
      plan.clamp = rule.argument;
      break;
    case Kind::kSilence:
      plan.silent = true;
      break;
    case Kind::kClose:
      plan.closes = true;
      if (rule.argument) plan.close_after = static_cast<std::size_t>(*rule.argument);
      break;
    case Kind::kDrop:
      plan.closes = true;
      plan.close_after = kWholeReply;
      break;
    case Kind::kNone:
      break;
  }
}

ReplyPlan FaultRules::Next(const CommandKey& key) {
  return Decide(key, false);
}

ReplyPlan FaultRules::NextCarried(const CommandKey& key) {
  return Decide(key, true);
}

ReplyPlan FaultRules::Decide(const CommandKey& key, bool is_carried) {
  ReplyPlan plan;
  const std::lock_guard<std::mutex> lock(mutex_);
  for (Rule& rule : rules_) {
    if (!Matches(rule, key) || (is_carried && !rule.command)) continue;
    ++rule.seen;
    if (rule.only == 0 || rule.only == rule.seen) Apply(rule, key, plan);
  }
  return plan;
}

}  // namespace varkel::sim
