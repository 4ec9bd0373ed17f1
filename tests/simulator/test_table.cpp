#include "tests/simulator/test_table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <stdexcept>

namespace varkel::sim {
namespace {

constexpr char kHeader[] =
    "GroupID,Index,Get,Set,SetIndex,VarName,VarType,DefaultValue,VarLen,Coefficient,FunctionModule,"
    "TimerUpdate,"
    "GetCmdPayload,Permission,Options,Unit,OptionDescription,SetCoefficient\n";

}  // namespace

std::string ModelTable(const std::string& model) {
  return VARKEL_TABLES "/" + model + ".csv";
}

std::shared_ptr<const ConfigParser> LoadTable(const std::string& path) {
  auto model = std::make_shared<ConfigParser>(path);
  if (!model->ExtractConfigInfo()) throw std::runtime_error("no table " + path);
  return model;
}

TestTable::TestTable(const std::string& rows) {
  static std::atomic<int> number{0};
  path_ = std::filesystem::path(testing::TempDir()) /
          ("sim_table_" + std::to_string(testing::UnitTest::GetInstance()->random_seed()) + "_" +
           std::to_string(number++) + ".csv");
  std::ofstream(path_, std::ios::binary) << kHeader << rows;
}

TestTable::~TestTable() {
  std::error_code error;
  std::filesystem::remove(path_, error);
}

}  // namespace varkel::sim
