#include "VarkelCore/src/config_parser.h"

#include <gmock/gmock.h>

#include <random>
#include <stdexcept>

#include "tests/catalogue/table_file.h"

namespace varkel {
namespace {

using test::TableFile;
using test::TableText;
using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;
using Span = std::pair<std::uint32_t, std::uint32_t>;

// A loaded catalogue and what the load printed.
struct Loaded {
  explicit Loaded(const std::string& text) : file(text), catalogue(file.path()) {
    testing::internal::CaptureStdout();
    EXPECT_TRUE(catalogue.ExtractConfigInfo());
    output = testing::internal::GetCapturedStdout();
  }
  explicit Loaded(const TableText& table) : Loaded(table.text()) {}
  const VarInfo& operator[](const std::string& var_id) const { return *catalogue.FindById(var_id); }

  TableFile file;
  ConfigParser catalogue;
  std::string output;
};

std::vector<std::string> Ids(const ConfigParser::VarList& vars) {
  std::vector<std::string> ids;
  for (const VarInfo* var : vars) {
    ids.push_back(var->var_id);
  }
  return ids;
}

TEST(ConfigParser, TellsAMissingFileFromAnEmptyTable) {
  testing::internal::CaptureStdout();
  const std::string missing = testing::TempDir() + "no such table.csv";
  EXPECT_FALSE(ConfigParser(missing).ExtractConfigInfo());
  EXPECT_FALSE(ConfigParser(testing::TempDir()).ExtractConfigInfo()) << "a folder";
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "ConfigParser::ExtractConfigInfo(): error with csv_reader_, loc = " + missing +
                "\nConfigParser::ExtractConfigInfo(): error with csv_reader_, loc = " + testing::TempDir() +
                "\n");

  const Loaded header_only{TableText()};
  EXPECT_THAT(header_only.catalogue.var_map(), IsEmpty());
  EXPECT_THAT(header_only.catalogue.module_titles(), IsEmpty());
  EXPECT_THAT(Loaded(std::string()).catalogue.var_map(), IsEmpty());
}

TEST(ConfigParser, FillsARecordFromItsRow) {
  const Loaded table(TableText()
                         .Module({"Page", "Group"})
                         .Var("GroupID=3;Index=12;Get=0x07;Set=0x21;SetIndex=4;VarName=Motor "
                              "speed;Permission=1;VarType=uint16;DefaultValue=600;Unit=rpm;Coefficient=0.5;"
                              "SetCoefficient=0.25;FunctionModule=1_1_5_3;VarLen=2;TimerUpdate=1"));
  const VarInfo& var = table["3-12"];
  EXPECT_EQ(var.index, 12);
  EXPECT_EQ(var.set_index, 4);
  EXPECT_EQ(var.get_cmd + var.set_cmd + var.var_type + var.var_name + var.unit,
            "0x070x21uint16Motor speed (rpm)");
  EXPECT_EQ(var.default_val + var.current_val, "600600");
  EXPECT_EQ(var.permission, 1);
  EXPECT_EQ(var.coefficient, 0.5F);
  EXPECT_EQ(var.set_coefficient, 0.25F);
  EXPECT_EQ(var.var_len, 2U);
  EXPECT_EQ(var.component_type, 3);
  EXPECT_TRUE(var.timer_update);
  EXPECT_EQ(table.catalogue.FindByName("Motor speed"), &var);
  EXPECT_EQ(table.catalogue.FindByName("motor speed"), nullptr);
  EXPECT_EQ(table.output, "");
}

TEST(ConfigParser, GivesEmptyCellsTheirDefaults) {
  const Loaded table(TableText().Var("GroupID=1;Index=1;Get=0x07;TimerUpdate=2"));
  const VarInfo& var = table["1-1"];
  EXPECT_EQ(var.set_index, -1);
  EXPECT_EQ(var.coefficient, 1.0F);
  EXPECT_EQ(var.set_coefficient, 1.0F);
  EXPECT_EQ(var.var_len, 0U);
  EXPECT_EQ(var.unit, "");
  EXPECT_FALSE(var.timer_update) << "2 is not 1";
}

TEST(ConfigParser, ReadsTheNotationsOfCells) {
  const struct {
    std::string payload;
    std::string digits;
    Bytes bytes;
    std::string options;
    std::vector<std::int32_t> values;
    std::pair<int, int> range;
    std::string description;
    std::map<std::int32_t, std::string> labels;
  } kCases[] = {
      {"0x0102A", "0102A", {1, 2}, "0|1|2", {0, 1, 2}, {0, 0}, "0_Off\n1_On", {{0, "Off"}, {1, "On"}}},
      {"0Xff7f", "ff7f", {0xFF, 0x7F}, "1~100", {}, {1, 100}, "0_Off\r\n1_On\r\n", {{0, "Off"}, {1, "On"}}},
      {"0x1", "", {}, "5", {5}, {0, 0}, " -3 _ Short gate \t", {{-3, "Short gate"}}},
      {"12AB", "", {}, "-40~-5", {}, {-40, -5}, "1_a_b\n1_c", {{1, "c"}}},
      {"", "", {}, "-1|+2", {-1, 2}, {0, 0}, "no value", {}},
  };
  for (const auto& c : kCases) {
    const Loaded table(TableText().Var("GroupID=1;Index=1;Get=7;GetCmdPayload=" + c.payload +
                                       ";Options=" + c.options + ";OptionDescription=" + c.description));
    const VarInfo& var = table["1-1"];
    EXPECT_EQ(var.get_cmd_payload, c.digits);
    EXPECT_EQ(var.get_cmd_payload_bytes, c.bytes) << c.payload;
    EXPECT_EQ(var.options, c.values) << c.options;
    EXPECT_EQ(var.option_num, static_cast<int>(c.values.size())) << c.options;
    EXPECT_EQ(std::make_pair(var.range_min, var.range_max), c.range) << c.options;
    EXPECT_EQ(var.option_labels, c.labels) << c.description;
  }
}

TEST(ConfigParser, PutsVariablesOnTheirPages) {
  TableText text;
  text.Module({"Network", "Address", "Time"}).Module({"Scan", "Motor"});
  const std::map<std::string, std::string> places = {
      {"1", "1_1_1_0"},  {"2", "1_1_2_1|2_1_7_1"},   {"3", "1_3_1_0"}, {"4", "0_1_1_0"},
      {"5", "3_1_1_0"},  {"6", "1_1_8_6"},           {"7", "1_1_4"},   {"8", "|1_2_9_3_9|"},
      {"9", "1_-5_1_0"}, {"10", "-2147483648_1_1_0"}};
  for (const auto& [index, place] : places) {
    text.Var(std::string("GroupID=4;Get=7;Index=").append(index).append(";FunctionModule=").append(place));
  }
  const Loaded table(text);
  EXPECT_THAT(table.catalogue.module_titles(),
              ElementsAre(ElementsAre("Network", "Address", "Time"), ElementsAre("Scan", "Motor")));
  ASSERT_EQ(table.catalogue.module_vars().size(), 2U);
  EXPECT_THAT(Ids(table.catalogue.module_vars()[0][0]), ElementsAre("4-1", "4-2"));
  EXPECT_THAT(Ids(table.catalogue.module_vars()[0][1]), ElementsAre("4-8"));
  EXPECT_THAT(Ids(table.catalogue.module_vars()[1][0]), ElementsAre("4-2"));
  EXPECT_THAT(Ids(table.catalogue.standalone_vars()), ElementsAre("4-6"));
  EXPECT_EQ(table["4-2"].module_places.at({1, 0}), 7);
  EXPECT_EQ(table["4-3"].module_places.at({0, 2}), 1) << "kept, though no page has the place";
  EXPECT_THAT(table["4-7"].module_places, IsEmpty());
  EXPECT_FALSE(table["4-8"].has_switch) << "only a switch has a fifth number";
}

TEST(ConfigParser, LaysOutPayloadsByTheirIndexes) {
  TableText text;
  const struct {
    std::string index, get, set, set_index, length;
  } kRows[] = {{"7", "0x07", "0x21", "2", "4"},  {"3", "0x07", "0x21", "3", "2"},
               {"12", "0x07", "0x21", "1", "1"}, {"2", "0x010", "", "", "4"},
               {"1", "0x010", "", "", "2"},      {"20", "", "0x21", "", "3"},
               {"30", "", "0x0100", "1", "3"}};
  for (const auto& row : kRows) {
    text.Var("GroupID=1;Index=" + row.index + ";Get=" + row.get + ";Set=" + row.set +
             ";SetIndex=" + row.set_index + ";VarLen=" + row.length);
  }
  const Loaded table(text);
  EXPECT_THAT(Ids(table.catalogue.get_cmd_map().at("0x07")), ElementsAre("1-3", "1-7", "1-12"));
  EXPECT_EQ(table["1-3"].get_start_pos, 0U);
  EXPECT_EQ(table["1-7"].get_start_pos, 2U);
  EXPECT_EQ(table["1-12"].get_start_pos, 6U);
  EXPECT_EQ(table["1-1"].get_start_pos, 4U) << "the reply to a four-byte command begins with its code";
  EXPECT_EQ(table["1-2"].get_start_pos, 6U);
  EXPECT_THAT(Ids(table.catalogue.set_cmd_map().at("0x21")), ElementsAre("1-20", "1-12", "1-7", "1-3"));
  EXPECT_EQ(table["1-12"].set_start_pos, 3U);
  EXPECT_EQ(table["1-3"].set_start_pos, 8U);
  EXPECT_EQ(table["1-30"].set_start_pos, 0U) << "a set payload has no code of its own";
}

TEST(ConfigParser, NamesWriteOnlyVariablesApart) {
  const Loaded table(TableText()
                         .Var("GroupID=1;Index=1;Set=0x21;VarName=Mode")
                         .Var("GroupID=1;Index=2;Set=0x22;VarName=Mode")
                         .Var("GroupID=1;Index=3;Set=9;Get=8;VarName=Mode"));
  EXPECT_EQ(table["1-2"].var_name, "Mode_0x22");
  EXPECT_EQ(table["1-3"].var_name, "Mode") << "it can be read, and so needs no name of its own";
  EXPECT_EQ(table.catalogue.FindByName("Mode"), &table["1-1"]);
  EXPECT_EQ(table.catalogue.FindByName("Mode_0x22"), &table["1-2"]);
  EXPECT_EQ(table.output, "ConfigParser::ExtractConfigInfoMode_0x22 is used in other cmd\n");
}

TEST(ConfigParser, LinksSwitchesToTheRowsAtTheirPosition) {
  TableText text;
  text.Module({"Page", "A", "B"});
  int index = 0;
  for (const char* place :
       {"1_1_1_2_1", "1_1_1_2", "1_1_2_1", "1_2_1_2", "1_2_2_2_1", "1_1_-1_2_-1", "9_9_1_2_1"}) {
    text.Var("GroupID=1;Index=" + std::to_string(++index) + ";Get=7;FunctionModule=" + place);
  }
  const Loaded table(text);
  EXPECT_TRUE(table["1-1"].has_switch);
  EXPECT_EQ(table["1-1"].switch_var, &table["1-1"]) << "it stands at its own position";
  EXPECT_EQ(table["1-2"].switch_var, &table["1-1"]);
  EXPECT_FALSE(table["1-2"].has_switch);
  EXPECT_EQ(table["1-3"].switch_var, nullptr) << "another position";
  EXPECT_EQ(table["1-4"].switch_var, &table["1-5"]) << "a switch may follow in the file";
  EXPECT_EQ(table["1-5"].switch_var, nullptr);
  EXPECT_EQ(table["1-6"].switch_var, nullptr) << "a negative position switches nothing";
  EXPECT_THAT(table.catalogue.switch_map().at(&const_cast<VarInfo&>(table["1-5"])), ElementsAre(0, 1, 1));
}

TEST(ConfigParser, LetsTheLaterOfTwoEqualIdentifiersWin) {
  const Loaded table(TableText()
                         .Module({"Page", "Group"})
                         .Var("GroupID=1;Index=1;Set=0x21;VarName=Old;Options=1|2;FunctionModule=1_1_1_2_1")
                         .Var("GroupID=1;Index=1;Get=0x07;VarName=New"));
  const VarInfo& var = table["1-1"];
  EXPECT_EQ(var.var_name, "New");
  EXPECT_EQ(var.set_cmd, "");
  EXPECT_THAT(var.options, IsEmpty());
  EXPECT_EQ(table.catalogue.var_map().size(), 1U);
  EXPECT_EQ(table.catalogue.FindByName("Old"), nullptr);
  EXPECT_EQ(table.output,
            "ConfigParser::ExtractConfigInfo(): ERROR with config file. There are vars with the same var_id. "
            "Some of "
            "them will be overwritten\nConfigParser::ExtractConfigInfo(): --- Details: file path = " +
                table.file.path() + ", var_id =1-1, var_name = New\n");
}

TEST(ConfigParser, SkipsRowsThatDefineNothing) {
  const Loaded table(TableText()
                         .Var("GroupID=;Index=1;Get=7;VarName=Lost")
                         .Var("GroupID=1;Index=;Get=7")
                         .Var("GroupID=1;Index=1;VarLen=no number, but nobody looks"));
  EXPECT_THAT(table.catalogue.var_map(), IsEmpty());
  const std::string warning =
      "ConfigParser::ExtractConfigInfo(): WARNING: something with config file - Some var lacks \"GroupID\" "
      "or "
      "\"Index\"---Detailed Infomation: file path = " +
      table.file.path() + ", var name = ";
  EXPECT_EQ(table.output, warning + "Lost\n" + warning + "\n");
}

TEST(ConfigParser, EndsTheLoadAtAnUnusableCell) {
  const std::string good = "GroupID=3;Index=12;Get=7;VarName=Speed";
  const struct {
    const char *left_out, *cell, *error;
  } kCases[] = {
      {"Unit", "", "Can't find a column named Unit"},
      {"GetCmdPayload", "VarLen=x", "Can't find a column named GetCmdPayload"},
      {"", "VarLen=two", "invalid stoi argument"},
      {"", "SetIndex=3000000000", "stoi argument out of range"},
      {"", "Permission=-", "invalid stoi argument"},
      {"", "Options=1|2|", "invalid stoi argument"},
      {"", "Options=~5", "invalid stoi argument"},
      {"", "OptionDescription=_Off", "invalid stoi argument"},
      {"", "Coefficient=x", "invalid stof argument"},
      {"", "SetCoefficient=1e99", "stof argument out of range"},
      {"", "FunctionModule=1__1_0", "invalid stoi argument"},
      {"", "GetCmdPayload=0xGG", "invalid stoi argument"},
      {"", "TimerUpdate=yes", "invalid stoi argument"},
  };
  for (const auto& c : kCases) {
    const TableFile file(TableText(c.left_out).Module({"Page", "Group"}).Var(good + ";" + c.cell).text());
    ConfigParser catalogue(file.path());
    EXPECT_EQ(catalogue.RowBeingRead(), "");
    try {
      catalogue.ExtractConfigInfo();
      ADD_FAILURE() << "no error for " << c.cell;
    } catch (const std::exception& error) {
      EXPECT_STREQ(error.what(), c.error) << c.cell;
    }
    EXPECT_EQ(catalogue.RowBeingRead(), "variable 3-12 \"Speed\", row 3");
  }
  const TableFile file(TableText().Var(good).text() + "x\"y\n");
  ConfigParser catalogue(file.path());
  EXPECT_THROW(catalogue.ExtractConfigInfo(), std::runtime_error);
  EXPECT_EQ(catalogue.RowBeingRead(), "row 3");
}

TEST(ConfigParser, FindsTheFieldOfACommand) {
  Loaded table(
      TableText()
          .Var("GroupID=1;Index=1;Get=7;Set=8;SetIndex=2;VarLen=2")
          .Var("GroupID=1;Index=2;Get=7;Set=8;SetIndex=1;VarLen=4")
          .Var("GroupID=2;Index=1;Get=7;Set=7;SetIndex=1;VarLen=1")
          .Var("GroupID=9;Index=1;Get=99;VarName=Shared Secret Key;VarLen=whatever the sensor sends"));
  Span field;
  EXPECT_TRUE(table.catalogue.GetVarPosOffset("7", "1-2", 100, field));
  EXPECT_EQ(field, Span(3, 4));
  EXPECT_TRUE(table.catalogue.GetVarPosOffset("8", "1-1", 100, field));
  EXPECT_EQ(field, Span(4, 2));
  EXPECT_TRUE(table.catalogue.GetVarPosOffset("7", "2-1", 100, field));
  EXPECT_EQ(field, Span(2, 1)) << "a command that stands in both columns reads";
  EXPECT_TRUE(table.catalogue.GetVarPosOffset("99", "9-1", 32, field));
  EXPECT_EQ(field, Span(0, 32));
  EXPECT_EQ(table["9-1"].var_len, 32U);

  testing::internal::CaptureStdout();
  EXPECT_FALSE(table.catalogue.GetVarPosOffset("7", "5-5", 100, field));
  EXPECT_FALSE(table.catalogue.GetVarPosOffset("0x07", "1-1", 100, field));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "ConfigParser::GetVarPosOffset(): ERROR. This var_id does not exist. Detail: var_id = 5-5, "
            "file_path = " +
                table.file.path() + "\nConfigParser::GetVarPosOffset(): don't have this command\n");
}

// Whatever stands in the file, a load ends well or with an error that says so.
TEST(ConfigParser, SurvivesAnyBytes) {
  const std::string good = TableText()
                               .Module({"Page", "A"})
                               .Var(
                                   "GroupID=1;Index=1;Get=0x07;Set=0x21;Options=0|1;OptionDescription=0_"
                                   "Off\n1_On;FunctionModule=1_1_1_2_1|1_1_2_2;GetCmdPayload=0x01")
                               .text();
  std::mt19937 random(20240918);
  std::uniform_int_distribution<int> byte(0, 255);
  testing::internal::CaptureStdout();
  int loaded = 0;
  for (int round = 0; round < 1500; ++round) {
    std::string text = good;
    const int changes = round % 10 == 0 ? static_cast<int>(good.size()) : 1 + round % 4;
    for (int i = 0; i < changes; ++i) {
      const std::size_t at = std::uniform_int_distribution<std::size_t>(good.find('\n') / (1U + round % 3),
                                                                        good.size() - 1)(random);
      text[at] = round % 2 == 0 ? static_cast<char>(byte(random)) : "0123456789|_~-,\"\nx"[byte(random) % 18];
    }
    const TableFile file(text);
    ConfigParser catalogue(file.path());
    try {
      loaded += catalogue.ExtractConfigInfo() ? 1 : 0;
    } catch (const std::exception& error) {
      EXPECT_STRNE(error.what(), "");
    }
  }
  testing::internal::GetCapturedStdout();
  EXPECT_GT(loaded, 100) << "the changes are too wild to reach the loader";
}

}  // namespace
}  // namespace varkel
