#include "VarkelCore/src/catalogue/table_lint.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/catalogue/table_file.h"

namespace varkel {
namespace {

using test::TableFile;
using test::TableText;

/// "3 error VarLen", for each finding.
std::vector<std::string> Places(const std::vector<TableFinding>& findings) {
  std::vector<std::string> places;
  for (const TableFinding& finding : findings) {
    EXPECT_TRUE(finding.text.ends_with('.')) << finding.text;
    places.push_back(std::to_string(finding.line) +
                     (finding.severity == Severity::kError ? " error " : " warning ") + finding.column);
  }
  return places;
}

TEST(TableLint, FindsEachFault) {
  // Each fault, put into a correct row, causes exactly one finding; a quoted row has one column per line of
  // the file.
  const struct {
    const char *row, *fault, *finding, *text;
  } kCases[] = {
      {"", "", nullptr, nullptr},
      {"", "VarType=uint24", "4 error VarType", "\"Speed\" (1-1): there is no type \"uint24\""},
      {"", "VarLen=4", "4 error VarLen", "uint16 takes 2 bytes, but VarLen is 4"},
      {"", "VarLen=x", "4 error VarLen", "is not a 32-bit integer"},
      {"", "Get=0x4G", "4 error Get", "\"0x4G\" is not a number"},
      {"", "Get=08", "4 error Get", "\"08\" is not a number"},
      {"", "Get=0x", "4 error Get", "\"0x\" is not a number"},
      {"", "Get=300", "4 error Get", "is not a byte"},
      {"", "Coefficient=nan", "4 error Coefficient", "can't be a factor"},
      {"", "Coefficient=0,5", "4 error Coefficient", "only begins with a number"},
      {"", "Coefficient=0", "4 error Coefficient", "loses every value"},
      {"", "GetCmdPayload=0x123", "4 error GetCmdPayload", "the last digit"},
      {"", "GetCmdPayload=0xGG", "4 error GetCmdPayload", "is not hexadecimal"},
      {"", "Options=9~1;DefaultValue=", "4 error Options", "write the smaller number first"},
      {"", "VarType=IP;VarLen=4;DefaultValue=", "4 error Options", "the type IP has no range"},
      {"", "DefaultValue=101", "4 warning DefaultValue", "101 is not among the Options 1~100"},
      {"", "Options=50;OptionDescription=50_A 5_B", nullptr, nullptr},
      {"", "Options=50|60;OptionDescription=50_A", "4 warning Options", "option 60 has no label"},
      {"", "Options=50;OptionDescription=50_A\n5_B", "4 warning OptionDescription", "belongs to no option"},
      {"", "OptionDescription=A_5", "4 error OptionDescription", "no number before its"},
      {"", "FunctionModule=1_1_1", "4 error FunctionModule", "is not four numbers"},
      {"", "FunctionModule=1_2_1_1", "4 error FunctionModule", "no row before this one defines"},
      {"", "FunctionModule=1_1_1_7", "4 error FunctionModule", "no kind from 0 to 6"},
      {"", "FunctionModule=1_1_1_3;Options=", "4 error Options", "a list to choose from"},
      {"", "FunctionModule=1_1_1_2", "4 error FunctionModule", "has no switch"},
      {"", "VarType=string;VarLen=8;Options=", "4 error Set", "a string can't be written"},
      {"", "VarType=uint32;VarLen=4", "4 warning VarType", "can only be set to 0"},
      {"", "Get=", "4 warning Get", "never read"},
      {"", "GroupID=", "4 warning GroupID", "is skipped"},
      {"Index=1;GroupID=2;Get=0x40;VarName=B;VarType=raw", "", "5 error Index",
       "Index 1 is used twice, by line 4"},
      {"Index=3;Get=0x40;VarName=B;VarType=raw", "", "5 warning Index",
       "Index 3 follows 1: a field is missing"},
      {"Index=2;Get=0x40;VarName=B;VarType=raw;GetCmdPayload=0x01", "", "5 error GetCmdPayload", "line 4"},
      {"Index=2;Get=1;Set=0x41;SetIndex=1;VarName=B;VarType=raw", "", "5 error SetIndex", "is used twice"},
      {"Index=2;Get=1;Set=0x41;VarName=B;VarType=raw", "", "5 error SetIndex", "SetIndex is missing"},
      {"Index=1;Get=1;VarName=B;VarType=raw", "", "5 error Index",
       "the identifier is already used by line 4"},
      {"Index=2;Get=1;VarName=Speed;VarType=raw", "", "5 warning VarName",
       "the name is already used by line 4"},
  };
  const std::string sound =
      ";Index=1;Get=0x40;Set=0x41;SetIndex=1;VarName=Speed;VarType=uint16;VarLen=2;Options=1~100;"
      "DefaultValue=50;"
      "FunctionModule=1_1_1_1";
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.row) + " " + c.fault);
    // A page of one group, with a line break in its title.
    std::vector<std::string> rows = {"0,\"Page\n1\",Group", c.fault + sound};
    if (*c.row != '\0') rows.emplace_back(c.row);
    const TableFile file(TableText(rows));
    const auto findings = LintTable(file.path());
    const auto expected =
        c.finding == nullptr ? std::vector<std::string>() : std::vector<std::string>{c.finding};
    ASSERT_EQ(Places(findings), expected) << (findings.empty() ? "" : findings[0].text);
    if (c.finding == nullptr) continue;
    EXPECT_THAT(findings[0].text, testing::HasSubstr(c.text));
    EXPECT_EQ(findings[0].file, file.path());
    EXPECT_EQ(findings[0].misplaces_written_field,
              findings[0].column == "SetIndex" || std::string(c.fault) == "VarLen=4");
  }
}

TEST(TableLint, FindsAMissingFileOrColumn) {
  EXPECT_THAT(Places(LintTable("no such table.csv")), testing::ElementsAre("0 error "));
  const TableFile file(TableText({}, "Unit"));
  EXPECT_THAT(Places(LintTable(file.path())), testing::ElementsAre("1 error Unit"));
}

TEST(TableLint, FindsNothingInTheShippedTables) {
  for (const char* model : {"Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"}) {
    for (const auto& finding : LintTable(std::string("./Config/varID/") + model + ".csv")) {
      ADD_FAILURE() << finding.file << ":" << finding.line << ": " << finding.column << ": " << finding.text;
    }
  }
}

}  // namespace
}  // namespace varkel
