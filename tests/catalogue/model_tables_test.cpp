#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/catalogue/table_check.h"

namespace varkel {
namespace {

using testing::Contains;

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

  ConfigParser catalogue{std::string("./Config/varID/") + GetParam() + ".csv"};
};

TEST_P(ModelTable, PlacesEveryVariable) {
  std::map<VarInfo*, std::size_t> shown;
  for (const auto& module : catalogue.module_vars()) {
    for (const auto& group : module) {
      EXPECT_FALSE(group.empty()) << "an empty group is a heading over nothing";
      for (VarInfo* var : group) ++shown[var];
    }
  }
  for (VarInfo* var : catalogue.standalone_vars()) ++shown[var];
  for (const auto& [var_id, var] : catalogue.var_map()) {
    EXPECT_EQ(shown[var.get()], var->module_places.size())
        << var_id << " " << var->var_name << ": a place is ignored";
    EXPECT_GE(shown[var.get()], 1U) << var_id << " " << var->var_name;
    EXPECT_LE(var->var_name.size() + var->unit.size(), 38U) << var->var_name << " is too long for its row";
    EXPECT_TRUE(var->component_type != kSwitch || var->switch_var != nullptr) << var->var_name;
    const bool chooses = var->component_type == kComboBox || var->component_type == kFieldOfView;
    EXPECT_TRUE(!chooses || var->option_num > 0) << var->var_name;
    for (const auto& label : var->option_labels) EXPECT_THAT(var->options, Contains(label.first)) << var_id;
  }
}

TEST_P(ModelTable, DescribesWritesThatReadBack) {
  EXPECT_THAT(CheckSetPayloads(catalogue), testing::IsEmpty());
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
      const int shown = var->var_type == "IP" ? 0 : static_cast<int>(std::stod(var->default_val));
      const bool has_range = var->range_min != 0 && var->range_max != 0;
      EXPECT_TRUE(!has_range || (var->range_min <= shown && shown <= var->range_max));
      EXPECT_TRUE(var->option_num == 0 || std::ranges::count(var->options, shown) == 1);
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

TEST_P(ModelTable, CanBeIdentifiedAndProbed) {
  for (const std::string name : {"SN", "PN", "Restart", "Destination IP", "Destination Port"}) {
    const bool probes = name.starts_with("Dest");
    if (probes && GetParam() == std::string("Zelto")) continue;
    const VarInfo* var = catalogue.FindByName(name);
    ASSERT_NE(var, nullptr) << name;
    EXPECT_EQ(var->get_cmd, probes ? "0x08" : name == "Restart" ? "0x10" : "0x07") << name;
    EXPECT_EQ(var->component_type == kStandalone, name == "Restart") << name;
    EXPECT_TRUE(!probes || var->get_start_pos == (name.ends_with("IP") ? 12U : 16U)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(All, ModelTable, testing::Values("Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"),
                         [](const auto& model) { return "Model" + std::to_string(model.index); });

}  // namespace
}  // namespace varkel
