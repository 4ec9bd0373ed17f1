#include "VarkelCore/src/csv_table.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/catalogue/table_file.h"

namespace varkel {
namespace {

using test::TableFile;
using testing::HasSubstr;

// The cells of columns A and B of every row, joined so that a failing case reads well.
std::string Read(const std::string& text) {
  const TableFile file(text);
  CsvTable table(file.path());
  const CsvColumn a("A");
  const CsvColumn b("B");
  std::string rows;
  table.ForEachRow([&](const CsvRow& row) {
    rows.append(std::to_string(row.number()))
        .append("[")
        .append(row.Cell(a))
        .append("][")
        .append(row.Cell(b)) += "]";
  });
  return rows;
}

std::string ReadError(const std::string& text) {
  try {
    return "no error, but " + Read(text);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
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
      {"columns in another order", "x,B,A\n0,2,1\n", "2[1][2]"},
      {"several lines and commas in a cell", "A,B\n\"0_Off\n1_On\",\"x,y\"\n3,4\n",
       "2[0_Off\n1_On][x,y]3[3][4]"},
      {"doubled quotes", "A,B\n\"5 \"\"nm\"\"\",\"\"\"\"\n", "2[5 \"nm\"][\"]"},
      {"short row", "A,B\n1\n", "2[1][]"},
      {"blanks are text", "A,B\n 1 ,\t\n", "2[ 1 ][\t]"},
      {"nothing at all", "", ""},
      {"a NUL byte is text", std::string("A,B\n1,\0\n", 8), std::string("2[1][\0]", 7)},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Read(c.text), c.rows) << c.what;
  }
}

TEST(CsvTable, KeepsCellsWholeAcrossBlocks) {
  for (const std::size_t size : {65530U, 65531U, 65532U, 65533U, 65536U, 200000U}) {
    const std::string cell(size, 'x');
    EXPECT_EQ(Read("A,B\n" + cell + ",\"2\"\"\"\n3,4\n"), "2[" + cell + "][2\"]3[3][4]") << size;
  }
}

TEST(CsvTable, SaysWhereQuotesAreMalformed) {
  EXPECT_THAT(ReadError("A,B\n1,2\n3,x\"y\n"), HasSubstr("Malformed quotes in line 3 of"));
  EXPECT_THAT(ReadError("A,B\n\"1\n\"x,2\n"), HasSubstr("Malformed quotes in line 3 of"));
  EXPECT_THAT(ReadError("A,B\n1,2\n3,\"4\n5,6\n"), HasSubstr("A quote opened in row 3 of"));
  EXPECT_EQ(ReadError("A,C\n1,2\n"), "Can't find a column named B");
}

TEST(CsvTable, StopsWithTheErrorOfTheRowsReader) {
  const TableFile file("A\n1\n2\n3\n");
  CsvTable table(file.path());
  int rows = 0;
  const auto end_at_second = [&rows](const CsvRow&) {
    if (++rows == 2) throw std::out_of_range("here");
  };
  EXPECT_THROW(table.ForEachRow(end_at_second), std::out_of_range);
  EXPECT_EQ(rows, 2);
}

}  // namespace
}  // namespace varkel
