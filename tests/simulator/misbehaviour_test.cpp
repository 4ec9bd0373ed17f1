#include "simulator/src/misbehaviour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace varkel::sim {
namespace {

const CommandKey kSeven{0x07, std::nullopt};
const CommandKey kEight{0x08, std::nullopt};
const CommandKey kLong{0xFF, 0x00010203};

TEST(Misbehaviours, FollowTheirRules) {
  Misbehaviours rules;
  for (const char* rule : {"0x07=late:1500", "0x07=split", "0x07=noise:7", "0x07=wrong-echo",
                           "0x07=error:0x1F", "0x07=lying-length:-4", "0x07=close:3", "8=silence"}) {
    rules.Add(rule);
  }
  const ReplyPlan seven = rules.Next(kSeven);
  EXPECT_EQ(seven.delay.count(), 1500);
  EXPECT_EQ(seven.piece_size, 1U);
  EXPECT_EQ(seven.noise_size, 7U);
  EXPECT_EQ(seven.echo, 0x08);
  EXPECT_EQ(seven.error, 0x1F);
  EXPECT_EQ(seven.length_lie, -4);
  EXPECT_TRUE(seven.closes);
  EXPECT_EQ(seven.close_after, 3U);
  EXPECT_FALSE(seven.silent);
  EXPECT_TRUE(rules.Next(kEight).silent);
}

TEST(Misbehaviours, CountExchangesOfTheirCommand) {
  Misbehaviours rules;
  rules.Add("0x07=silence#2");
  EXPECT_FALSE(rules.Next(kSeven).silent);
  EXPECT_FALSE(rules.Next(kEight).silent);
  EXPECT_TRUE(rules.Next(kSeven).silent);
  EXPECT_FALSE(rules.Next(kSeven).silent);
}

TEST(Misbehaviours, MatchCommandsHoweverWritten) {
  const auto is_silent = [](const char* rule, const CommandKey& key) {
    Misbehaviours rules;
    rules.Add(rule);
    return rules.Next(key).silent;
  };
  EXPECT_TRUE(is_silent("0x00010203=silence", kLong));
  EXPECT_FALSE(is_silent("0x00010204=silence", kLong));
  EXPECT_TRUE(is_silent("0xFF=silence", kLong));
  EXPECT_TRUE(is_silent("*=silence", kLong));
  EXPECT_FALSE(is_silent("0x00010203=silence", {0xFF, std::nullopt}));
}

TEST(Misbehaviours, MatchTheFramesOfASmallSensor) {
  const CommandKey get{10, 2, CommandFamily::kSerialCommand};
  const CommandKey set{10, 3, CommandFamily::kSerialCommand};
  const CommandKey frame{10, std::nullopt, CommandFamily::kFirmware};
  const CommandKey ktc{10, std::nullopt};
  const std::vector<std::pair<std::string, std::vector<CommandKey>>> table = {
      {"ldcmd:10", {get, set}},
      {"ldcmd-get:0x0A", {get}},
      {"ldcmd-set:10", {set}},
      {"ota:10", {frame}},
      {"10", {ktc}},
      {"ldcmd:11", {}},
  };
  for (const auto& [name, concerned] : table) {
    Misbehaviours rules;
    rules.Add(name + "=pull");
    for (const CommandKey& key : {get, set, frame, ktc}) {
      const bool is_concerned = std::find(concerned.begin(), concerned.end(), key) != concerned.end();
      EXPECT_EQ(rules.Next(key).closes, is_concerned) << name;
    }
  }
  Misbehaviours rules;
  for (const char* rule : {"ldcmd:256=silence", "ldcmd:=silence", "ldcmd=silence", "lidar:10=silence",
                           "ota:-1=silence", "ota:*=silence"}) {
    EXPECT_THROW(rules.Add(rule), std::invalid_argument) << rule;
  }
}

TEST(Misbehaviours, ReplaceAndEndRules) {
  Misbehaviours rules;
  rules.Add("0x07=error:5");
  rules.Add("0x08=error:6");
  rules.Add("0x07=error:9");
  EXPECT_EQ(rules.Next(kSeven).error, 9);
  rules.Add("0x07=none");
  EXPECT_FALSE(rules.Next(kSeven).error);
  EXPECT_EQ(rules.Next(kEight).error, 6);
  rules.Clear();
  EXPECT_FALSE(rules.Next(kEight).error);
}

TEST(Misbehaviours, RefuseWhatTheyDoNotUnderstand) {
  for (const char* rule :
       {"", "0x07", "=silence", "0x07=", "0x07=shouting", "abc=silence", "0x07=late", "0x07=late:x",
        "0x07=late:-1", "0x07=late:5ms", "0x07=error:0", "0x07=error:256", "0x07=split:0", "0x07=silence:1",
        "0x07=close#0", "0x07=close#x", "0x07=lying-length", "0x07=error:"}) {
    Misbehaviours rules;
    EXPECT_THROW(rules.Add(rule), std::invalid_argument) << rule;
  }
}

}  // namespace
}  // namespace varkel::sim
