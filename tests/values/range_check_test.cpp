#include "VarkelCore/src/values/range_check.h"

#include <atomic>
#include <thread>

#include "tests/values/value_table.h"

namespace varkel {
namespace {

using enum RangeFault;

std::shared_ptr<Model> OneVariable(const std::string& type, const std::string& range,
                                   const std::string& set_coefficient, const std::string& value,
                                   const std::string& permission = "1") {
  return test::ModelOf({"Index=1;Get=0x01;Set=0x02;VarName=Value;VarLen=4;FunctionModule=1_1_1_1;VarType=" +
                        type + ";Options=" + range + ";SetCoefficient=" + set_coefficient +
                        ";DefaultValue=" + value + ";Permission=" + permission});
}

TEST(RangeCheck, JudgesOneValue) {
  const struct {
    const char* range;
    const char* value;
    RangeFault fault;
    const char* set_coefficient = "";
  } kCases[] = {
      {"1~100", "0", kOutOfRange},        {"1~100", "100.9", kNone},  // truncated to the upper bound
      {"1~100", "101", kOutOfRange},      {"0~100", "500", kNone},    // a bound of 0 turns the check off
      {"1~100", "20", kOutOfRange, "10"}, {"-10~-1", "-10.9", kNone},
      {"1~100", "x", kNotANumber},        {"1~100", "1e99", kNotANumber}};
  for (const auto& c : kCases) {
    const auto model = OneVariable("float32", c.range, c.set_coefficient, c.value);
    EXPECT_EQ(JudgeValue(*model->catalogue, *model->catalogue->FindByName("Value")).fault, c.fault)
        << c.value;
  }
}

TEST(RangeCheck, JudgesAPagesValues) {
  const struct {
    const char* type;
    const char* range;
    const char* value;
    RangeFault fault;
    const char* permission = "1";
    const char* detail = "";
  } kCases[] = {{"int16", "1~100", "100", kNone},
                {"int16", "1~100", "101", kOutOfRange},
                {"int16", "1~100", "101", kNone, "0"},
                {"float32", "1~100", "100.9", kNone},  // judged as an integer
                {"uint8", "1~100", "x", kNotANumber, "1", "invalid stoi argument"},
                {"uint8", "1~100", "99999999999", kNotANumber, "1", "stoi argument out of range"},
                {"string", "1~100", "x", kNone},
                {"raw", "", "ABCD", kNone},
                {"raw", "", "ABCDE", kOutOfRange},
                {"IP", "", "001.02.3.099", kNone},
                {"IP", "", "0001.2.3.4", kIpFormat},
                {"IP", "", "192.168.1.256", kIpFormat},
                {"IP", "", "192.168..1", kIpFormat},
                {"IP", "", "192.168.1.+1", kIpFormat},
                {"MAC", "", "00:1A:2b:3C:4D:5E", kNone},
                {"MAC", "", "00:1A:2B:3C:4D", kMacFormat},
                {"MAC", "", "00:1A:2B:3C:4D:5G", kMacFormat}};
  for (const auto& c : kCases) {
    const auto model = OneVariable(c.type, c.range, "10", c.value, c.permission);
    const RangeVerdict verdict = JudgePageValue(*model->catalogue, *model->catalogue->FindByName("Value"));
    EXPECT_EQ(verdict.fault, c.fault) << c.type << " " << c.value;
    EXPECT_EQ(verdict.detail, c.detail) << c.value;
  }
}

// The length of a "Shared Secret Key" is that of the last payload, which another thread may be handling at
// the same time; ThreadSanitizer checks this.
TEST(RangeCheck, LengthsMayChangeMeanwhile) {
  const auto model =
      test::ModelOf({"Index=1;Set=0x02;VarName=Shared Secret Key;VarType=raw;Permission=1;"
                     "DefaultValue=ABCD;FunctionModule=1_1_1_1"});
  ConfigParser& catalogue = *model->catalogue;
  VarInfo& key = *catalogue.FindByName("Shared Secret Key");
  std::atomic<bool> done = false;
  std::jthread writer([&] {
    std::pair<std::uint32_t, std::uint32_t> field;
    for (std::uint32_t length = 4; !done; ++length) catalogue.GetVarPosOffset("0x02", key, length, field);
  });
  for (int i = 0; i < 100; ++i) {
    const RangeFault fault = JudgePageValue(catalogue, key).fault;
    EXPECT_TRUE(fault == kNone || fault == kOutOfRange);
  }
  done = true;
}

}  // namespace
}  // namespace varkel
