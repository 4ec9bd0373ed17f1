#include "VarkelCore/src/catalogue/config_parser.h"

#include <gmock/gmock.h>

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

const std::string kLoad = "ConfigParser::ExtractConfigInfo";

// A loaded catalogue and what the load printed.
struct Loaded {
  explicit Loaded(const std::vector<std::string>& rows) : file(TableText(rows)) {
    testing::internal::CaptureStdout();
    EXPECT_TRUE(catalogue.ExtractConfigInfo());
    output = testing::internal::GetCapturedStdout();
  }
  const VarInfo& operator[](const std::string& var_id) const { return *catalogue.FindById(var_id); }

  TableFile file;
  ConfigParser catalogue{file.path()};
  std::string output;
};

// The identifiers, in order, each followed by a space.
std::string Ids(const ConfigParser::VarList& vars) {
  std::string ids;
  for (const VarInfo* var : vars) ids += var->var_id + " ";
  return ids;
}

TEST(ConfigParser, DistinguishesAMissingFileFromAnEmptyTable) {
  EXPECT_FALSE(ConfigParser("no such table.csv").ExtractConfigInfo());
  EXPECT_FALSE(ConfigParser("/").ExtractConfigInfo()) << "a folder";
  for (const std::string& text : {TableText({}), std::string()}) {
    const TableFile file(text);
    ConfigParser catalogue(file.path());
    EXPECT_TRUE(catalogue.ExtractConfigInfo());
    EXPECT_THAT(catalogue.var_map(), IsEmpty());
  }
}

TEST(ConfigParser, ReadsTheNotationsOfCells) {
  const struct {
    std::string payload, digits;
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
    SCOPED_TRACE(c.payload + " " + c.options + " " + c.description);
    const Loaded table({"Index=1;Get=7;GetCmdPayload=" + c.payload + ";Options=" + c.options +
                        ";OptionDescription=" + c.description});
    const VarInfo& var = table["1-1"];
    EXPECT_EQ(std::pair(var.get_cmd_payload, var.get_cmd_payload_bytes), std::pair(c.digits, c.bytes));
    EXPECT_EQ(std::pair(var.options, std::size_t(var.option_num)), std::pair(c.values, c.values.size()));
    EXPECT_EQ(std::pair(var.range_min, var.range_max), c.range);
    EXPECT_EQ(var.option_labels, c.labels);
  }
}

TEST(ConfigParser, DisambiguatesWriteOnlyVariables) {
  const Loaded table(
      {"Index=1;Set=0x21;VarName=Mode", "Index=2;Set=0x22;VarName=Mode", "Index=3;Set=9;Get=8;VarName=Mode"});
  EXPECT_EQ(table["1-3"].var_name, "Mode") << "it can be read, so its name need not be unique";
  EXPECT_EQ(table.catalogue.FindByName("Mode"), &table["1-1"]);
  EXPECT_EQ(table.catalogue.FindByName("Mode_0x22"), &table["1-2"]);
  EXPECT_EQ(table.output, kLoad + "Mode_0x22 is used in other cmd\n");
}

TEST(ConfigParser, LinksSwitchesToTheRowsAtTheirPosition) {
  std::vector<std::string> rows = {"0,Page,A,B"};
  for (const char* place :
       {"1_1_1_2_1", "1_1_1_2", "1_1_2_1", "1_2_1_2", "1_2_2_2_1", "1_1_-1_2_-1", "9_9_1_2_1"}) {
    rows.push_back("Get=7;Index=" + std::to_string(rows.size()) + ";FunctionModule=" + place);
  }
  const Loaded table(rows);
  // A switch keeps its own position and may come later in the file; a negative position has no switch.
  const std::map<std::string, const VarInfo*> switches = {{"1-1", &table["1-1"]}, {"1-2", &table["1-1"]},
                                                          {"1-3", nullptr},       {"1-4", &table["1-5"]},
                                                          {"1-5", nullptr},       {"1-6", nullptr}};
  for (const auto& [id, var] : switches) EXPECT_EQ(table[id].switch_var, var) << id;
  EXPECT_EQ(Ids(table.catalogue.VarsWithoutSwitch()), "1-5 1-6 ");
  EXPECT_TRUE(table["1-1"].has_switch);
  EXPECT_FALSE(table["1-2"].has_switch);
  EXPECT_THAT(table.catalogue.switch_map().at(&const_cast<VarInfo&>(table["1-5"])), ElementsAre(0, 1, 1));
}

TEST(ConfigParser, ReportsRowsThatClashOrDefineNothing) {
  const Loaded table({"0,Page,Group", "Index=1;Set=0x21;VarName=Old;Options=1|2;FunctionModule=1_1_1_2_1",
                      "Index=1;Get=0x07;VarName=New", "GroupID=;Index=1;Get=7;VarName=Lost",
                      "GroupID=1;Index=;Get=7", "Index=2;VarLen=no number, but nobody looks"});
  const VarInfo& var = table["1-1"];
  EXPECT_EQ(var.var_name + var.set_cmd, "New");
  EXPECT_THAT(var.options, IsEmpty());
  EXPECT_EQ(table.catalogue.var_map().size(), 1U);
  EXPECT_EQ(table.catalogue.FindByName("Old"), nullptr);
  EXPECT_THAT(table.output, testing::HasSubstr("same var_id"));
  EXPECT_THAT(table.output, testing::HasSubstr("var name = Lost\n"));
}

TEST(ConfigParser, WarnsOfTextAfterACoefficient) {
  const Loaded table({"Get=7;Index=1;VarName=Speed;Coefficient=0,5;SetCoefficient=2 rpm",
                      "Get=7;Index=2;Coefficient= +0.5 ;SetCoefficient=1e-3"});
  EXPECT_EQ(std::pair(table["1-1"].coefficient, table["1-1"].set_coefficient), std::pair(0.0F, 2.0F));
  EXPECT_EQ(std::pair(table["1-2"].coefficient, table["1-2"].set_coefficient), std::pair(0.5F, 1e-3F));
  const std::string place = "variable 1-1 \"Speed\", row 2: ";
  const std::string rest =
      " only begins with a number, and the rest is ignored. Write it with a decimal point.";
  EXPECT_THAT(table.catalogue.load_warnings(),
              ElementsAre(place + "Coefficient \"0,5\"" + rest, place + "SetCoefficient \"2 rpm\"" + rest));
}

TEST(ConfigParser, EndsTheLoadAtAnUnusableCell) {
  const std::string good = "GroupID=3;Index=12;Get=7;VarName=Speed";
  const struct {
    const char *left_out, *cell, *error;
  } kCases[] = {
      {"Unit", "", "Can't find a column named Unit"},
      {"", "SetIndex=3000000000", "stoi argument out of range"},
      {"", "Options=1|2|", "invalid stoi argument"},
      {"", "FunctionModule=1__1_0", "invalid stoi argument"},
  };
  for (const auto& c : kCases) {
    const TableFile file(TableText({"0,Page,Group", good + ";" + c.cell}, c.left_out));
    ConfigParser catalogue(file.path());
    try {
      catalogue.ExtractConfigInfo();
      ADD_FAILURE() << "no error for " << c.cell;
    } catch (const std::exception& error) {
      EXPECT_STREQ(error.what(), c.error) << c.cell;
    }
    EXPECT_EQ(catalogue.RowBeingRead(), "variable 3-12 \"Speed\", row 3");
  }
  const TableFile file(TableText({good, "x\"y"}));
  ConfigParser catalogue(file.path());
  EXPECT_THROW(catalogue.ExtractConfigInfo(), std::runtime_error);
  EXPECT_EQ(catalogue.RowBeingRead(), "row 3");
}

TEST(ConfigParser, FindsTheFieldOfACommand) {
  Loaded table({"Index=1;Get=7;Set=8;SetIndex=2;VarLen=2", "Index=2;Get=7;Set=8;SetIndex=1;VarLen=4",
                "GroupID=2;Index=1;Get=7;Set=7;SetIndex=1;VarLen=1",
                "GroupID=9;Index=1;Get=99;VarName=Shared Secret Key;VarLen=whatever the sensor sends"});
  Span field;
  const auto field_of = [&](const char* command, const char* var_id) {
    return table.catalogue.GetVarPosOffset(command, var_id, 32, field) ? field : Span{99, 99};
  };
  EXPECT_EQ(field_of("7", "1-2"), Span(3, 4));
  EXPECT_EQ(field_of("8", "1-1"), Span(4, 2));
  EXPECT_EQ(field_of("7", "2-1"), Span(2, 1)) << "a command in both columns reads";
  EXPECT_EQ(field_of("99", "9-1"), Span(0, 32));
  EXPECT_EQ(table["9-1"].var_len, 32U);
  EXPECT_FALSE(table.catalogue.GetVarPosOffset("7", "5-5", 100, field));
  EXPECT_FALSE(table.catalogue.GetVarPosOffset("0x07", "1-1", 100, field));
}

}  // namespace
}  // namespace varkel
