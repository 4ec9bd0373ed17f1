#include "VarkelCore/src/documents/table_reference.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace varkel {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The text after each `begin`, up to the next quote.
std::multiset<std::string> Quoted(const std::string& text, const std::string& begin) {
  std::multiset<std::string> found;
  for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at + 1)) {
    const std::size_t first = at + begin.size();
    found.insert(text.substr(first, text.find('"', first) - first));
  }
  return found;
}

TEST(Reference, ShowsEveryVariableAndLinksEveryCommand) {
  for (const char* model : {"Quenta", "Zelto", "Zelto-KTC", "Marvo-KTC"}) {
    ConfigParser table(std::string("./Config/varID/") + model + ".csv");
    ASSERT_TRUE(table.ExtractConfigInfo());
    const TableReference reference = MakeReference(model, table);
    const std::string html = HtmlReference(reference);
    const std::string markdown = MarkdownReference(reference);
    for (const auto& [id, var] : table.var_map()) {
      EXPECT_THAT(html, HasSubstr("<td class=\"id\">" + id + "</td><td class=\"name\">" + var->var_name));
      EXPECT_THAT(markdown, HasSubstr("| " + id + " | " + var->var_name));
    }
    const auto anchors = Quoted(html, " id=\"");
    for (const std::string& link : Quoted(html, " href=\"#")) EXPECT_EQ(anchors.count(link), 1U) << link;
    EXPECT_THAT(html, Not(HasSubstr("http")));  // it loads nothing
  }
}

TEST(Reference, ShowsValuesScalesAndPositions) {
  ConfigParser table("./Config/varID/Quenta.csv");
  ASSERT_TRUE(table.ExtractConfigInfo());
  const TableReference reference = MakeReference("Quenta", table);
  const std::string html = HtmlReference(reference);
  const std::string markdown = MarkdownReference(reference);
  for (const char* text :
       {"<span class=\"option\">0 Stopped</span>, <span class=\"option\">1 Starting</span>", "1024 to 65535",
        "<small>&times; 0.001</small>", "Asked with the payload <code>0x0102</code>", "Reply, 11 bytes",
        "Write request, 22 bytes", "<title>Safety Mode, uint8, byte 4</title>",
        "<title>Watchdog Time-Out, int64, bytes 10 to 17</title>"}) {
    EXPECT_THAT(html, HasSubstr(text));
  }
  for (const char* text :
       {"## Time Sync", "### 0x01000102 Safety Mode and 5 more", "| 5 | 1 | Over-Temperature Limit | int8 |",
        "| 0 Stopped, 1 Starting, 2 Running, 3 Blocked |", "uint16 × 0.5"}) {
    EXPECT_THAT(markdown, HasSubstr(text));
  }
}

TEST(Reference, AcceptsAnyText) {
  const std::string path = testing::TempDir() + "reference.csv";
  std::ofstream(path)
      << "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
         "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n"
         "0,<b>\n1,1,0x40,no,,</title><script>|`,0,string,\"\"\"><i>\",,,,,,,400000000,,\n"
         "1,2,0x40,,,äöüßäöüßäöüß äöüßäöüßäöüßäöüßäöüß,0,uint8,,,,,,,,1,,\n";
  ConfigParser table(path);
  ASSERT_TRUE(table.ExtractConfigInfo());
  const TableReference reference = MakeReference("<model>", table);
  const std::string html = HtmlReference(reference);
  for (const char* tag : {"<model>", "<b>", "</title><script>", "\"><i>"}) {
    EXPECT_THAT(html, Not(HasSubstr(tag)));
  }
  EXPECT_LT(html.size(), 40'000U);  // the diagram of a field does not grow with the field's length
  EXPECT_THAT(html, HasSubstr("äöüßäöüßä…"));
  EXPECT_THAT(MarkdownReference(reference), HasSubstr("\\</title\\>\\<script\\>\\|\\`"));
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace varkel
