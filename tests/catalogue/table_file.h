#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace varkel::test {

/// A table file named after the running test, removed with the object. Only one can exist at a time.
class TableFile {
 public:
  explicit TableFile(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }
  ~TableFile() { std::filesystem::remove(path_); }
  TableFile(const TableFile&) = delete;
  TableFile& operator=(const TableFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  const testing::TestInfo* const test_ = testing::UnitTest::GetInstance()->current_test_info();
  const std::string path_ = testing::TempDir() + test_->test_suite_name() + "." + test_->name() + ".csv";
};

/// A table's text. "Column=text;Column=text" is the row of a variable, in group 1 unless it names another; a
/// row without "=" is used unchanged.
inline std::string TableText(const std::vector<std::string>& rows, const std::string& left_out_column = {}) {
  std::vector<std::string> columns = {"GroupID",           "Index",          "Get",        "Set",
                                      "SetIndex",          "VarName",        "Permission", "VarType",
                                      "DefaultValue",      "Options",        "Unit",       "Coefficient",
                                      "OptionDescription", "FunctionModule", "VarLen",     "TimerUpdate",
                                      "SetCoefficient",    "GetCmdPayload"};
  std::erase(columns, left_out_column);
  std::string text;
  for (const std::string& column : columns) text.append(column).append(",");
  for (const std::string& row : rows) {
    text += "\n";
    if (row.find('=') == std::string::npos) text += row;
    for (const std::string& column : columns) {
      if (row.find('=') == std::string::npos) break;
      const std::string cells = ";" + row + ";GroupID=1;";
      const std::size_t found = cells.find(";" + column + "=");
      const std::size_t begin = found == std::string::npos ? cells.size() : found + column.size() + 2;
      text.append("\"").append(cells.substr(begin, cells.find(';', begin) - begin)).append("\",");
    }
  }
  return text + "\n";
}

}  // namespace varkel::test
