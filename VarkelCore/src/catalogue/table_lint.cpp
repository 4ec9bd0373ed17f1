#include "VarkelCore/src/catalogue/table_lint.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "VarkelCore/src/catalogue/csv_table.h"
#include "VarkelCore/src/catalogue/lint_row.h"
#include "VarkelCore/src/catalogue/table_cells.h"
#include "VarkelCore/src/catalogue/var_info.h"

namespace varkel {
namespace {

using Rows = std::vector<LintRow>;
using Place = std::tuple<std::int32_t, std::int32_t, std::int32_t>;  // page, group, position

constexpr const char* kColumns[] = {
    "GroupID",           "Index",          "Get",          "Set",         "SetIndex",       "VarName",
    "Permission",        "VarType",        "DefaultValue", "Options",     "Unit",           "Coefficient",
    "OptionDescription", "FunctionModule", "VarLen",       "TimerUpdate", "SetCoefficient", "GetCmdPayload"};

std::string InLine(const LintRow& row) {
  return "line " + std::to_string(row.line);
}

bool HasAllColumns(const CsvTable& table, LintReport& report) {
  if (const std::string separator = table.WrongSeparator(); !separator.empty()) {
    report.Error(1, "GroupID", "Can't find a column named GroupID" + separator);
    return false;
  }
  bool has_all = true;
  for (const char* column : kColumns) {
    if (std::ranges::count(table.header(), column) > 0) continue;
    report.Error(
        1, column,
        std::string("The header has no column ") + column + "; add it, even if its cells are empty.");
    has_all = false;
  }
  return has_all;
}

/// The places of a row; empty if the cell can't be parsed, which its own check reports.
std::vector<PlaceCell> Places(const LintRow& row) {
  std::vector<PlaceCell> places;
  std::string_view cell = row["FunctionModule"];
  try {
    while (const auto place = TakePlace(cell)) places.push_back(*place);
  } catch (const std::exception&) {
    places.clear();
  }
  return places;
}

void CheckSwitches(const Rows& rows, LintReport& report) {
  std::set<Place> switched;
  for (const LintRow& row : rows) {
    for (const PlaceCell& place : Places(row)) {
      if (place.switched_position) switched.insert({place.module, place.group, *place.switched_position});
    }
  }
  for (const LintRow& row : rows) {
    const std::vector<PlaceCell> places = Places(row);
    if (places.empty() || places.back().component != kSwitch) continue;
    const auto has_switch = [&](const PlaceCell& place) {
      return switched.contains({place.module, place.group, place.position});
    };
    if (std::ranges::none_of(places, has_switch)) {
      report.Error(row.line, "FunctionModule",
                   row.Name() +
                       ": a row of kind 2 has no switch; give the switch, a row at the same position, that "
                       "position as its fifth number.");
    }
  }
}

void CheckDuplicates(const Rows& rows, LintReport& report) {
  std::map<std::string, const LintRow*> ids;
  std::map<std::string, const LintRow*> names;
  for (const LintRow& row : rows) {
    if (const auto [first, is_new] = ids.try_emplace(row.Id(), &row); !is_new) {
      report.Error(row.line, "Index",
                   row.Name() + ": the identifier is already used by " + InLine(*first->second) +
                       "; give another Index.");
    }
    if (const auto [first, is_new] = names.try_emplace(row["VarName"], &row); !is_new) {
      report.Warning(
          row.line, "VarName",
          row.Name() + ": the name is already used by " + InLine(*first->second) + "; give another one.");
    }
  }
}

/// Checks that the fields of one command follow each other without gaps, in the order of their indexes.
void CheckOrder(const std::string& command, const std::vector<const LintRow*>& fields, bool writes,
                LintReport& report) {
  const char* const column = writes ? "SetIndex" : "Index";
  std::vector<std::pair<std::int64_t, const LintRow*>> order;
  for (const LintRow* row : fields) {
    try {
      order.emplace_back(IntCell((*row)[column], -1), row);
    } catch (const std::exception&) {
      return;  // reported already
    }
  }
  std::ranges::stable_sort(order, {}, [](const auto& field) { return field.first; });
  for (std::size_t i = 0; order.size() > 1 && i < order.size(); ++i) {
    const auto [index, row] = order[i];
    const std::int64_t before = i == 0 ? index - 1 : order[i - 1].first;
    std::string fault;
    if (index < 0) {
      fault = " is missing; number the fields of the command from 1.";
    } else if (index == before) {
      fault = " " + std::to_string(index) + " is used twice, by " + InLine(*order[i - 1].second) +
              " too; number the fields in their order.";
    } else if (index > before + 1 && before >= 0) {
      fault = " " + std::to_string(index) + " follows " + std::to_string(before) +
              ": a field is missing; add a variable for its bytes, or close the gap.";
    } else {
      continue;
    }
    const std::string text =
        (writes ? "set command " : "get command ") + command + ", " + row->Name() + ": " + column;
    if (writes) {
      report.Misplaced(row->line, column, text + fault);
    } else if (index == before) {
      report.Error(row->line, column, text + fault);
    } else {
      report.Warning(row->line, column, text + fault);
    }
  }
}

void CheckCommands(const Rows& rows, LintReport& report) {
  for (const bool writes : {false, true}) {
    std::map<std::string, std::vector<const LintRow*>> commands;
    for (const LintRow& row : rows) {
      if (const std::string& command = row[writes ? "Set" : "Get"]; !command.empty()) {
        commands[command].push_back(&row);
      }
    }
    for (const auto& [command, fields] : commands) {
      CheckOrder(command, fields, writes, report);
      const LintRow& first = *fields.front();
      for (const LintRow* row : fields) {
        if (writes || (*row)["GetCmdPayload"] == first["GetCmdPayload"]) continue;
        report.Error(row->line, "GetCmdPayload",
                     row->Name() + ": the variables of a get command share one reply; write the payload of " +
                         InLine(first) + ".");
      }
    }
  }
}

/// Reads the variable rows and checks each by itself; page rows come before the rows that use them.
class TableReader {
 public:
  TableReader(CsvTable& table, LintReport& report) : table_(table), report_(report) {}

  Rows Read() {
    table_.ForEachRow([this](const CsvRow& row) {
      if (is_first_) has_columns_ = HasAllColumns(table_, report_);
      is_first_ = false;
      if (has_columns_) Take(row);
    });
    if (is_first_) HasAllColumns(table_, report_);
    return std::move(rows_);
  }

 private:
  void Take(const CsvRow& csv) {
    LintRow row{csv.line(), {}};
    for (std::size_t i = 0; i < table_.header().size(); ++i) {
      row.cells.try_emplace(table_.header()[i], csv.Cell(i));
    }
    if (row["GroupID"].empty() || row["Index"].empty()) {
      report_.Warning(row.line, row["GroupID"].empty() ? "GroupID" : "Index",
                      "The row is skipped: GroupID or Index is empty; fill both in.");
    } else if (row["GroupID"] == "0") {
      std::size_t titles = 0;
      for (std::size_t i = 1; i < csv.size(); ++i) titles += csv.Cell(i).empty() ? 0U : 1U;
      pages_.push_back(titles == 0 ? 0 : titles - 1);
    } else if (!row["Get"].empty() || !row["Set"].empty()) {
      LintCells(row, pages_, report_);
      rows_.push_back(std::move(row));
    }
  }

  CsvTable& table_;
  LintReport& report_;
  bool is_first_ = true;
  bool has_columns_ = false;
  PageGroups pages_;
  Rows rows_;
};

}  // namespace

std::vector<TableFinding> LintTable(const std::string& path) {
  LintReport report(path);
  CsvTable table(path);
  if (!table.is_open()) {
    report.Error(0, "", "The file can't be opened.");
    return report.Take();
  }
  try {
    const Rows rows = TableReader(table, report).Read();
    CheckDuplicates(rows, report);
    CheckSwitches(rows, report);
    CheckCommands(rows, report);
  } catch (const std::exception& error) {  // malformed quotes
    report.Error(table.line(), "", error.what() + std::string("."));
  }
  std::vector<TableFinding> findings = report.Take();
  std::ranges::stable_sort(findings, {}, &TableFinding::line);
  return findings;
}

}  // namespace varkel
