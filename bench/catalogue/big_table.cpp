#include "bench/catalogue/big_table.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "VarkelCore/src/catalogue/csv_table.h"

namespace varkel::bench {
namespace {

using Row = std::vector<std::string>;

// The first columns of a model table, and the one with the names.
constexpr std::size_t kGroup = 0;
constexpr std::size_t kGet = 2;
constexpr std::size_t kSet = 3;
constexpr std::size_t kName = 5;
constexpr std::size_t kGroupsARound = 1000;
constexpr std::string_view kHeader =
    "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
    "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n";

std::vector<Row> ReadModel() {
  std::vector<Row> rows;
  CsvTable table(VARKEL_TABLES "/Quenta.csv");
  table.ForEachRow([&rows](const CsvRow& row) {
    Row& cells = rows.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      cells.emplace_back(row.Cell(i));
    }
  });
  return rows;
}

std::string Renamed(const std::string& command, std::size_t round) {
  if (command.empty()) {
    return command;
  }
  std::ostringstream text;
  text << "0x" << std::hex << std::uppercase << std::setfill('0') << std::setw(6) << round;
  return text.str() + command.substr(command.size() - 2);
}

Row InRound(Row row, std::size_t round) {
  if (round > 0) {
    row[kGroup] = std::to_string(std::stoul(row[kGroup]) + round * kGroupsARound);
    row[kGet] = Renamed(row[kGet], round);
    row[kSet] = Renamed(row[kSet], round);
    row[kName] += " " + std::to_string(round);
  }
  return row;
}

class Writer {
 public:
  explicit Writer(const std::string& path) : file_(path, std::ios::binary) { file_ << kHeader; }
  void Write(const Row& row) {
    const char* separator = "";
    for (const std::string& cell : row) {
      const bool quoted = cell.find_first_of(",\"\n") != std::string::npos;
      file_ << separator << (quoted ? "\"" : "") << cell << (quoted ? "\"" : "");
      separator = ",";
      text_size_ += cell.size();
    }
    file_ << '\n';
  }
  std::size_t text_size() const { return text_size_; }

 private:
  std::ofstream file_;
  std::size_t text_size_ = 0;
};

}  // namespace

BigTable::BigTable(std::size_t variables)
    : path_(std::filesystem::temp_directory_path() /
            ("varkel-bench-" + std::to_string(getpid()) + "-" + std::to_string(variables) + ".csv")) {
  const std::vector<Row> rows = ReadModel();
  const auto first =
      std::find_if(rows.begin(), rows.end(), [](const Row& row) { return row[kGroup] != "0"; });
  if (first == rows.end()) {
    throw std::runtime_error("The model's table has no variables");
  }
  Writer writer(path_);
  std::for_each(rows.begin(), first, [&writer](const Row& row) { writer.Write(row); });
  const auto a_round = static_cast<std::size_t>(rows.end() - first);
  for (std::size_t i = 0; i < variables; ++i) {
    writer.Write(InRound(first[static_cast<std::ptrdiff_t>(i % a_round)], i / a_round));
  }
  text_size_ = writer.text_size();
}

BigTable::~BigTable() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

}  // namespace varkel::bench
