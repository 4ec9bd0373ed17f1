#include "VarkelCore/src/catalogue/csv_table.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/catalogue/table_file.h"

namespace varkel {
namespace {

using test::TableFile;
using testing::HasSubstr;

// The cells of columns A and B of every row, joined into one readable text, or the error.
std::string Read(const std::string& text) {
  const TableFile file(text);
  CsvTable table(file.path());
  const CsvColumn a("A");
  const CsvColumn b("B");
  std::string rows;
  try {
    table.ForEachRow([&](const CsvRow& row) {
      const std::string first(row.Cell(a));
      rows += std::to_string(row.number()) + "[" + first + "][" + std::string(row.Cell(b)) + "]";
    });
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return rows;
}

TEST(CsvTable, ReadsTheNotationsOfSpreadsheets) {
  const struct {
    const char* what;
    std::string text;
    std::string rows;
  } kCases[] = {
      {"no line end at the end", "A,B\n1,2", "2[1][2]"},
      {"CRLF", "A,B\r\n1,2\r\n\r\n3,4\r\n", "2[1][2]3[3][4]"},
      {"byte-order mark", "\xEF\xBB\xBF\"A\",B\n1,2\n", "2[1][2]"},
      {"several lines and commas in a cell", "A,B\n\"0_Off\n1_On\",\"x,y\"\n3,4\n",
       "2[0_Off\n1_On][x,y]3[3][4]"},
      {"doubled quotes", "A,B\n\"5 \"\"nm\"\"\",\"\"\"\"\n", "2[5 \"nm\"][\"]"},
      {"short row", "A,B\n1\n", "2[1][]"},
      {"a NUL byte is text", std::string("A,B\n1,\0\n", 8), std::string("2[1][\0]", 7)},
  };
  for (const auto& c : kCases) EXPECT_EQ(Read(c.text), c.rows) << c.what;
}

TEST(CsvTable, KeepsCellsWholeAcrossBlocks) {
  for (const std::size_t size : {65531U, 65532U, 65536U, 200000U}) {
    const std::string cell(size, 'x');
    EXPECT_EQ(Read("A,B\n" + cell + ",\"2\"\"\"\n3,4\n"), "2[" + cell + "][2\"]3[3][4]") << size;
  }
}

TEST(CsvTable, SaysWhereQuotesAreMalformed) {
  EXPECT_THAT(Read("A,B\n1,2\n3,x\"y\n"), HasSubstr("Malformed quotes in line 3 of"));
  EXPECT_THAT(Read("A,B\n1,2\n3,\"4\n5,6\n"), HasSubstr("A quote opened in row 3 of"));
  EXPECT_EQ(Read("A,C\n1,2\n"), "Can't find a column named B");
  EXPECT_EQ(Read("A;B\n1;2\n"),
            "Can't find a column named A: " + TableFile("").path() +
                " separates its cells with \";\". Save it as comma-separated text (CSV).");
}

}  // namespace
}  // namespace varkel
