#include <gmock/gmock.h>

#include <regex>
#include <set>

#include "VarkelCore/src/command_text.h"
#include "VarkelCore/src/config_parser.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {
namespace {

using testing::Contains;
using testing::IsSupersetOf;

const std::set<std::string> kWritableTypes = {"IP",    "uint8", "uint16",  "int8",  "int16",
                                              "int32", "int64", "float32", "double"};

class ModelTable : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    testing::internal::CaptureStdout();
    const bool loaded = catalogue.ExtractConfigInfo();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ASSERT_TRUE(loaded) << catalogue.path();
  }
  const VarInfo& Var(const std::string& name) const {
    static const VarInfo kNone;
    const VarInfo* var = catalogue.FindByName(name);
    EXPECT_NE(var, nullptr) << name;
    return var == nullptr ? kNone : *var;
  }

  ConfigParser catalogue{std::string("./Config/varID/") + GetParam() + ".csv"};
};

TEST_P(ModelTable, PlacesEveryVariable) {
  std::map<VarInfo*, std::size_t> shown;
  for (const auto& module : catalogue.module_vars()) {
    for (const auto& group : module) {
      EXPECT_FALSE(group.empty()) << "an empty group is a heading over nothing";
      for (VarInfo* var : group) {
        ++shown[var];
      }
    }
  }
  for (VarInfo* var : catalogue.standalone_vars()) {
    ++shown[var];
  }
  for (const auto& [var_id, var] : catalogue.var_map()) {
    EXPECT_EQ(shown[var.get()], var->module_places.size())
        << var_id << " " << var->var_name << ": a place is ignored";
    EXPECT_GE(shown[var.get()], 1U) << var_id << " " << var->var_name;
    EXPECT_LE(var->var_name.size() + var->unit.size(), 38U) << var->var_name << " is too long for its row";
    if (var->component_type == kSwitch) {
      EXPECT_NE(var->switch_var, nullptr) << var->var_name;
    }
    if (var->component_type == kComboBox || var->component_type == kFieldOfView) {
      EXPECT_GT(var->option_num, 0) << var->var_name;
    }
    for (const auto& label : var->option_labels) {
      EXPECT_THAT(var->options, Contains(label.first)) << var->var_name;
    }
  }
}

TEST_P(ModelTable, DescribesWritesThatReadBack) {
  for (const auto& [cmd, vars] : catalogue.set_cmd_map()) {
    std::int32_t set_index = 0;
    for (const VarInfo* var : vars) {
      SCOPED_TRACE(cmd + " " + var->var_name);
      EXPECT_EQ(var->set_index, ++set_index);
      EXPECT_EQ(var->permission, 1);
      if (var->component_type == kUpgradeArea) {
        EXPECT_EQ(var->var_type, "raw");
        continue;
      }
      EXPECT_THAT(kWritableTypes, Contains(var->var_type));
      EXPECT_NE(var->get_cmd, "") << "a write refreshes the fields it does not change";
      EXPECT_EQ(var->coefficient, var->set_coefficient);
      if (var->range_min != 0 && var->range_max != 0) {
        const int shown = quarn::lidar::TextToInt(var->default_val);
        EXPECT_TRUE(var->range_min <= shown && shown <= var->range_max);
      }
      if (var->option_num > 0) {
        EXPECT_THAT(var->options, Contains(quarn::lidar::TextToInt(var->default_val)));
      }
    }
  }
}

TEST_P(ModelTable, LaysOutRepliesWithoutGaps) {
  for (const auto& [cmd, vars] : catalogue.get_cmd_map()) {
    EXPECT_NO_THROW(ParseCommandText(cmd)) << cmd;
    std::int32_t index = 0;
    for (const VarInfo* var : vars) {
      EXPECT_EQ(var->index, ++index) << cmd << " " << var->var_name;
      EXPECT_EQ(var->get_cmd_payload, vars.front()->get_cmd_payload) << cmd << " lays out one reply";
    }
  }
}

// Users see a default in the form of a value that was read.
TEST_P(ModelTable, ShowsDefaultsAsValues) {
  const std::map<std::string, const char*> forms = {{"IP", R"((\d+\.){3}\d+)"},
                                                    {"MAC", R"((([1-9A-F]|0?[01])[0-9A-F]:?){6})"},
                                                    {"HWVER", R"(\S{1,8} (\d+\.){3}\d+ \(\d+\))"},
                                                    {"SWVER_YMD", R"((\d+\.){3}\d+ \(\d{4}-\d\d-\d\d\))"},
                                                    {"DT", R"(\d+ h [1-5]?\d min [1-5]?\d s)"},
                                                    {"string", R"([ -~]+)"},
                                                    {"raw", ""}};
  for (const auto& [var_id, var] : catalogue.var_map()) {
    const auto form = forms.find(var->var_type);
    const bool decimals = var->coefficient != 1.0F || var->var_type == "float32" || var->var_type == "double";
    const char* number = decimals ? R"(-?\d+\.\d\d)" : R"(-?\d+)";
    EXPECT_TRUE(std::regex_match(var->default_val, std::regex(form == forms.end() ? number : form->second)))
        << var->var_name << " " << var->default_val;
    EXPECT_TRUE(var->var_type != "string" || var->default_val.size() <= var->var_len) << var->var_name;
  }
}

TEST_P(ModelTable, CanBeIdentifiedAndProbed) {
  EXPECT_EQ(Var("SN").get_cmd, "0x07");
  EXPECT_EQ(Var("PN").get_cmd, "0x07");
  EXPECT_EQ(Var("PN").default_val.substr(0, 2), std::string(GetParam()).substr(0, 2));
  EXPECT_EQ(Var("Restart").component_type, kStandalone);
  if (GetParam() != std::string("Zelto")) {
    EXPECT_EQ(Var("Destination IP").get_cmd + Var("Destination Port").get_cmd, "0x080x08");
    EXPECT_EQ(Var("Destination IP").get_start_pos, 12U);
    EXPECT_EQ(Var("Destination Port").get_start_pos, 16U);
  }
}

INSTANTIATE_TEST_SUITE_P(All, ModelTable, testing::Values("Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"),
                         [](const auto& model) {
                           std::string name = model.param;
                           std::erase(name, '-');
                           return name;
                         });

TEST(QuentaTableContents, ShowsEverythingThatTablesCanSay) {
  ConfigParser catalogue("./Config/varID/Quenta.csv");
  ASSERT_TRUE(catalogue.ExtractConfigInfo());
  EXPECT_GE(catalogue.var_map().size(), 100U);
  EXPECT_GE(catalogue.module_titles().size(), 6U);
  std::set<std::string> types;
  std::set<std::string> written_types;
  std::set<std::int32_t> kinds;
  int timers = 0;
  int payloads = 0;
  int negative_ranges = 0;
  for (const auto& [var_id, var] : catalogue.var_map()) {
    types.insert(var->var_type);
    kinds.insert(var->component_type);
    if (!var->set_cmd.empty()) {
      written_types.insert(var->var_type);
    }
    timers += var->timer_update ? 1 : 0;
    payloads += var->get_cmd_payload_bytes.empty() ? 0 : 1;
    negative_ranges += var->range_min < 0 ? 1 : 0;
  }
  EXPECT_THAT(kinds, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6));
  EXPECT_THAT(types,
              IsSupersetOf({"IP", "MAC", "HWVER", "SWVER_YMD", "DT", "string", "raw", "uint8", "uint16",
                            "uint32", "uint64", "int8", "int16", "int32", "int64", "float32", "double"}));
  EXPECT_THAT(written_types, IsSupersetOf(kWritableTypes));
  EXPECT_TRUE(timers > 10 && payloads > 1 && negative_ranges > 1);
  EXPECT_TRUE(catalogue.get_cmd_map().contains("0x01000101") &&
              catalogue.set_cmd_map().contains("0x01000102"));
  for (const char* name : {"Restart", "Reset", "Operation Log", "Fault Log", "Event Log"}) {
    const VarInfo* var = catalogue.FindByName(name);
    ASSERT_NE(var, nullptr) << name;
    EXPECT_FALSE(var->get_cmd.empty()) << name;
    EXPECT_THAT(catalogue.standalone_vars(), Contains(var)) << name;
  }
  EXPECT_EQ(catalogue.FindByName("Channel Field of View")->set_cmd, "0x22");
  EXPECT_EQ(catalogue.FindByName("Channel Field of View")->get_cmd, "0x23");
}

}  // namespace
}  // namespace varkel
