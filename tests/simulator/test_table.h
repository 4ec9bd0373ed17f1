#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "VarkelCore/src/config_parser.h"

namespace varkel::sim {

/// The path of a model's real table.
std::string ModelTable(const std::string& model);

/// The loaded table; a failing load throws.
std::shared_ptr<const ConfigParser> LoadTable(const std::string& path);

/// A table of a few rows in a file that goes with the object. Columns of a row: GroupID, Index, Get, Set,
/// SetIndex, VarName, VarType, DefaultValue, VarLen, Coefficient, FunctionModule, TimerUpdate,
/// GetCmdPayload.
class TestTable {
 public:
  explicit TestTable(const std::string& rows);
  ~TestTable();
  TestTable(const TestTable&) = delete;
  TestTable& operator=(const TestTable&) = delete;

  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace varkel::sim
