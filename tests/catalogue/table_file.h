#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace varkel::test {

/// A table in a file of its own, removed with the object.
class TableFile {
 public:
  explicit TableFile(const std::string& text) : path_(UniquePath()) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TableFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  TableFile(const TableFile&) = delete;
  TableFile& operator=(const TableFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  static std::string UniquePath() {
    static int count = 0;
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    return testing::TempDir() + test->test_suite_name() + "." + test->name() + "." + std::to_string(++count) +
           ".csv";
  }
  std::string path_;
};

/// Writes a table's text row by row. Rows name only the cells that matter.
class TableText {
 public:
  explicit TableText(const std::string& left_out_column = {}) {
    for (const char* name : {"GroupID", "Index", "Get", "Set", "SetIndex", "VarName", "Permission", "VarType",
                             "DefaultValue", "Options", "Unit", "Coefficient", "OptionDescription",
                             "FunctionModule", "VarLen", "TimerUpdate", "SetCoefficient", "GetCmdPayload"}) {
      if (name != left_out_column) {
        columns_.emplace_back(name);
      }
    }
    Row(columns_);
  }
  TableText& Module(std::vector<std::string> titles) {
    titles.insert(titles.begin(), "0");
    return Row(titles);
  }
  /// "Column=text;Column=text": the cells of one variable.
  TableText& Var(const std::string& cells) {
    std::vector<std::string> row;
    for (const std::string& column : columns_) {
      const std::size_t found = (";" + cells).find(";" + column + "=");
      const std::size_t begin = found == std::string::npos ? cells.size() : found + column.size() + 1;
      row.push_back(cells.substr(begin, cells.find(';', begin) - begin));
    }
    return Row(row);
  }
  const std::string& text() const { return text_; }

 private:
  TableText& Row(const std::vector<std::string>& cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      text_ += (i == 0 ? "\"" : ",\"") + cells[i] + "\"";
    }
    text_ += "\n";
    return *this;
  }
  std::vector<std::string> columns_;
  std::string text_;
};

}  // namespace varkel::test
