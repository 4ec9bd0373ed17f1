#include "VarkelCore/src/pages/variable_finder.h"
#include "tests/values/value_table.h"

namespace varkel {
namespace {

std::shared_ptr<Model> SpeedModel() {
  const std::string word = ";VarType=uint16;VarLen=2";
  const std::string byte = ";VarType=uint8;VarLen=1";
  return test::ModelOf(
      {"Index=1;Get=0x07;VarName=Motor Speed;DefaultValue=600;Unit=rpm;FunctionModule=1_1_3_1" + word,
       "Index=2;Get=0x07;Set=0x17;VarName=Target Speed;DefaultValue=1200;FunctionModule=1_1_1_1" + word,
       "Index=3;Get=0x08;VarName=Mode;DefaultValue=1;Options=0|1;OptionDescription=0_Slow|1_Top Speed;"
       "FunctionModule=1_1_2_3" +
           byte,
       "Index=4;Get=0x09;VarName=Speed;DefaultValue=0;FunctionModule=1_1_5_0" + byte,
       "Index=5;Get=0x09;VarName=Speed Log;VarType=raw;FunctionModule=1_1_1_6"});
}

TEST(VariableFinderTest, FindsByAnythingTheUserMayRemember) {
  const auto model = SpeedModel();
  const VariableFinder finder(model);
  const auto names = [&](const char* query, std::size_t limit = 100) {
    std::vector<std::string> found;
    for (const FoundRow& row : finder.Find(query, limit)) found.push_back(row.var->var_name);
    return found;
  };
  using Names = std::vector<std::string>;
  const struct {
    const char* query;
    Names found;
  } kCases[] = {
      {"speed", {"Speed", "Target Speed", "Motor Speed", "Mode"}},  // begins with it, contains it, an option
      {"MOTOR sp", {"Motor Speed"}},
      {"rpm", {"Motor Speed"}},
      {"0x17", {"Target Speed"}},
      {"top", {"Mode"}},
      {"1200", {"Target Speed"}},
      {"speed 0x07", {"Target Speed", "Motor Speed"}},
      {"  ", {}},
      {"nowhere", {}},
  };
  for (const auto& [query, found] : kCases) EXPECT_EQ(names(query), found) << query;
  EXPECT_EQ(names("speed", 2), (Names{"Speed", "Target Speed"}));

  model->values.Edit(*model->catalogue->FindByName("Motor Speed"), "Nine");
  EXPECT_EQ(names("nine"), (Names{"Motor Speed"}));
  EXPECT_EQ(finder.Find("nine", 1).front().row, 3);  // below the heading and two others
}

}  // namespace
}  // namespace varkel
