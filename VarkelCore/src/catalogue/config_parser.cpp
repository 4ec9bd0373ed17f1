#include "VarkelCore/src/catalogue/config_parser.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/catalogue/csv_table.h"
#include "VarkelCore/src/catalogue/table_cells.h"
#include "libquarn/Platform/src/trace.h"

namespace varkel {
namespace {

constexpr std::string_view kModuleGroupId = "0";
constexpr const char* kGetKind = "get";
constexpr const char* kSetKind = "set";
constexpr int kNoIndex = -1;

void Trace(std::string_view function, const std::string& text) {
  quarn::platform::TraceLine(std::string("ConfigParser::").append(function).append(text));
}

void TraceLoad(const std::string& text) {
  Trace("ExtractConfigInfo", text);
}
void TraceLookUp(const std::string& text) {
  Trace("GetVarPosOffset", text);
}

std::string VarId(std::string_view group_id, std::string_view index) {
  std::string var_id(group_id);
  var_id.append("-").append(index);
  return var_id;
}

void LayOut(ConfigParser::VarList& vars, std::int32_t VarInfo::*order, std::uint32_t VarInfo::*position,
            std::uint32_t first) {
  std::stable_sort(vars.begin(), vars.end(),
                   [order](const VarInfo* a, const VarInfo* b) { return a->*order < b->*order; });
  for (VarInfo* var : vars) {
    var->*position = first;
    first += var->var_len;
  }
}

// The position that a switch record serves -> the record.
using GroupSwitches = std::unordered_map<std::int32_t, VarInfo*>;

void LinkGroup(const ConfigParser::VarList& group, ModulePlace place, const GroupSwitches& switches) {
  for (VarInfo* var : group) {
    const auto position = var->module_places.find(place);
    if (position == var->module_places.end()) {
      throw std::out_of_range("invalid map<K, T> key");
    }
    if (const auto found = switches.find(position->second); found != switches.end()) {
      var->switch_var = found->second;
    }
  }
}

}  // namespace

struct ConfigParser::Columns {
  CsvColumn group_id{"GroupID"};
  CsvColumn index{"Index"};
  CsvColumn get{"Get"};
  CsvColumn set{"Set"};
  CsvColumn set_index{"SetIndex"};
  CsvColumn var_name{"VarName"};
  CsvColumn permission{"Permission"};
  CsvColumn var_type{"VarType"};
  CsvColumn default_value{"DefaultValue"};
  CsvColumn options{"Options"};
  CsvColumn unit{"Unit"};
  CsvColumn coefficient{"Coefficient"};
  CsvColumn option_description{"OptionDescription"};
  CsvColumn function_module{"FunctionModule"};
  CsvColumn var_len{"VarLen"};
  CsvColumn timer_update{"TimerUpdate"};
  CsvColumn set_coefficient{"SetCoefficient"};
  CsvColumn get_cmd_payload{"GetCmdPayload"};

  std::string Describe(const CsvRow& row) const {
    std::string text;
    if (const auto group = row.CellIfPresent(group_id); !group.empty()) {
      text.append("variable ").append(group).append("-").append(row.CellIfPresent(index));
      if (const auto name = row.CellIfPresent(var_name); !name.empty()) {
        text.append(" \"").append(name).append("\"");
      }
      text += ", ";
    }
    return text + "row " + std::to_string(row.number());
  }
};

ConfigParser::ConfigParser(std::string path)
    : path_(std::move(path)), table_(std::make_unique<CsvTable>(path_)) {}

ConfigParser::~ConfigParser() = default;

bool ConfigParser::ExtractConfigInfo() {
  if (!table_->is_open()) {
    TraceLoad("(): error with csv_reader_, loc = " + path_);
    return false;
  }
  const Columns columns;
  try {
    table_->ForEachRow([this, &columns](const CsvRow& row) {
      try {
        LoadRow(row, columns);
      } catch (...) {
        row_being_read_ = columns.Describe(row);
        throw;
      }
    });
  } catch (...) {
    if (row_being_read_.empty()) {
      row_being_read_ = "row " + std::to_string(table_->row_number());
    }
    throw;
  }
  LayOutPayloads();
  LinkSwitches();
  for (VarInfo* var : file_order_) {
    by_name_.try_emplace(var->var_name, var);
  }
  return true;
}

std::string ConfigParser::RowBeingRead() const {
  return row_being_read_;
}

void ConfigParser::LoadRow(const CsvRow& row, const Columns& columns) {
  const std::string_view group_id = row.Cell(columns.group_id);
  const std::string_view index = row.Cell(columns.index);
  if (group_id.empty() || index.empty()) {
    TraceLoad(
        "(): WARNING: something with config file - Some var lacks \"GroupID\" or \"Index\"---Detailed "
        "Infomation: "
        "file path = " +
        path_ + ", var name = " + std::string(row.Cell(columns.var_name)));
    return;
  }
  if (group_id == kModuleGroupId) {
    AddModule(row);
    return;
  }
  const std::string_view get_cmd = row.Cell(columns.get);
  const std::string_view set_cmd = row.Cell(columns.set);
  if (get_cmd.empty() && set_cmd.empty()) {
    return;
  }
  VarInfo* var = StoreRow(row, columns);
  Place(var, row.Cell(columns.function_module));
  if (!get_cmd.empty()) {
    AddToCommand(get_cmd, var, kGetKind, get_cmd_map_);
  }
  if (!set_cmd.empty()) {
    if (get_cmd.empty()) {
      Disambiguate(var);
    }
    AddToCommand(set_cmd, var, kSetKind, set_cmd_map_);
  }
}

void ConfigParser::AddToCommand(std::string_view cmd, VarInfo* var, const char* kind, CommandLists& lists) {
  const std::string key(cmd);
  cmd_kind_map_.try_emplace(key, kind);
  lists[key].push_back(var);
}

void ConfigParser::AddModule(const CsvRow& row) {
  std::vector<std::string> titles;
  for (std::size_t i = 1; i < row.size(); ++i) {
    if (!row.Cell(i).empty()) {
      titles.emplace_back(row.Cell(i));
    }
  }
  module_titles_.push_back(std::move(titles));
  module_vars_.resize(module_titles_.size());
  const std::size_t entries = module_titles_.back().size();
  module_vars_.back().resize(entries == 0 ? 0 : entries - 1);
}

VarInfo& ConfigParser::Record(const std::string& var_id, std::string_view var_name) {
  std::unique_ptr<VarInfo>& record = var_map_[var_id];
  if (record == nullptr) {
    record = std::make_unique<VarInfo>();
    record->var_id = var_id;
    file_order_.push_back(record.get());
  } else {
    TraceLoad(
        "(): ERROR with config file. There are vars with the same var_id. Some of them will be overwritten");
    TraceLoad("(): --- Details: file path = " + path_ + ", var_id =" + var_id +
              ", var_name = " + std::string(var_name));
  }
  return *record;
}

// A second row with the same identifier overwrites the first one's values, but the first one's places remain.
VarInfo* ConfigParser::StoreRow(const CsvRow& row, const Columns& columns) {
  // Read from left to right, so that the error for a table lacking several columns always names the same one.
  const std::string_view set_index = row.Cell(columns.set_index);
  const std::string_view var_name = row.Cell(columns.var_name);
  const std::string_view permission = row.Cell(columns.permission);
  const std::string_view var_type = row.Cell(columns.var_type);
  const std::string_view default_value = row.Cell(columns.default_value);
  const std::string_view options_cell = row.Cell(columns.options);
  const std::string_view unit = row.Cell(columns.unit);
  const std::string_view coefficient = row.Cell(columns.coefficient);
  const std::string_view option_description = row.Cell(columns.option_description);
  row.Cell(columns.function_module);
  const std::string_view var_len = row.Cell(columns.var_len);
  const std::string_view timer_update = row.Cell(columns.timer_update);
  const std::string_view set_coefficient = row.Cell(columns.set_coefficient);
  const std::string_view get_cmd_payload = row.Cell(columns.get_cmd_payload);

  GetPayloadCell payload = ParseGetPayload(get_cmd_payload);
  OptionsCell options = ParseOptions(options_cell);
  std::map<std::int32_t, std::string> labels = ParseOptionLabels(option_description);

  VarInfo& var = Record(VarId(row.Cell(columns.group_id), row.Cell(columns.index)), var_name);
  var.index = IntCell(row.Cell(columns.index), kNoIndex);
  var.set_index = IntCell(set_index, kNoIndex);
  var.get_cmd = row.Cell(columns.get);
  var.set_cmd = row.Cell(columns.set);
  var.var_type = var_type;
  var.var_name = var_name;
  var.unit = unit.empty() ? std::string() : " (" + std::string(unit) + ")";
  var.get_start_pos = 0;
  var.set_start_pos = 0;
  var.var_len = TakesWholePayload(var_name) ? 0 : static_cast<std::uint32_t>(IntCell(var_len, 0));
  var.permission = IntCell(permission, 0);
  var.coefficient = FloatCell(coefficient, 1.0F);
  var.set_coefficient = FloatCell(set_coefficient, 1.0F);
  for (const CsvColumn* column : {&columns.coefficient, &columns.set_coefficient}) {
    WarnOfPartialNumber(row, columns, *column);
  }
  var.default_val = default_value;
  var.current_val = default_value;
  var.options = std::move(options.values);
  var.option_num = static_cast<std::int32_t>(var.options.size());
  var.option_labels = std::move(labels);
  var.option_description = option_description;
  var.range_min = options.range_min;
  var.range_max = options.range_max;
  var.timer_update = IntCell(timer_update, 0) == 1;
  var.get_cmd_payload = std::move(payload.digits);
  var.get_cmd_payload_bytes = std::move(payload.bytes);
  return &var;
}

void ConfigParser::Place(VarInfo* var, std::string_view function_module) {
  while (const auto place = TakePlace(function_module)) {
    var->module_places[{place->module, place->group}] = place->position;
    var->component_type = place->component;
    if (place->component == kStandalone) {
      standalone_vars_.push_back(var);
      continue;
    }
    if (place->switched_position) {
      switch_map_[var] = {place->module, place->group, *place->switched_position};
      var->has_switch = true;
    }
    if (HasGroup({place->module, place->group})) {
      Group({place->module, place->group}).push_back(var);
    }
  }
}

bool ConfigParser::HasGroup(const ModulePlace& place) const {
  const auto [module, group] = place;
  return module >= 0 && std::cmp_less(module, module_vars_.size()) && group >= 0 &&
         std::cmp_less(group, module_vars_[static_cast<std::size_t>(module)].size());
}

ConfigParser::VarList& ConfigParser::Group(const ModulePlace& place) {
  return module_vars_[static_cast<std::size_t>(place.first)][static_cast<std::size_t>(place.second)];
}

// "0,5" in a table from a locale with decimal commas reads as 0, and the rest is ignored.
void ConfigParser::WarnOfPartialNumber(const CsvRow& row, const Columns& columns, const CsvColumn& column) {
  const std::string_view cell = row.Cell(column);
  if (!cell.empty() && !IsWholeNumber(cell)) {
    load_warnings_.push_back(columns.Describe(row) + ": " + column.name() + " \"" + std::string(cell) +
                             "\" only begins with a number, and the rest is ignored. Write it with a "
                             "decimal point.");
  }
}

// Set-only variables are looked up by name, so no two of them may share one.
void ConfigParser::Disambiguate(VarInfo* var) {
  const VarInfo* owner = set_only_names_.try_emplace(var->var_name, var).first->second;
  if (owner != var) {
    var->var_name += "_" + var->set_cmd;
    TraceLoad(var->var_name + " is used in other cmd");
  }
}

void ConfigParser::LayOutPayloads() {
  for (auto& [cmd, vars] : get_cmd_map_) {
    LayOut(vars, &VarInfo::index, &VarInfo::get_start_pos, IsExtendedCommand(cmd) ? kExtendedCodeSize : 0);
  }
  for (auto& [cmd, vars] : set_cmd_map_) {
    LayOut(vars, &VarInfo::set_index, &VarInfo::set_start_pos, 0);
  }
}

// Visits the records in file order, not by address: of two switches for one position, the later row always
// wins.
void ConfigParser::LinkSwitches() {
  std::map<ModulePlace, GroupSwitches> switches;
  for (VarInfo* var : file_order_) {
    if (!var->has_switch) {
      continue;
    }
    if (const auto& [module, group, position] = switch_map_.at(var); position >= 0) {
      switches[{module, group}][position] = var;
    }
  }
  for (const auto& [place, group_switches] : switches) {
    if (HasGroup(place)) {
      LinkGroup(Group(place), place, group_switches);
    }
  }
}

ConfigParser::VarList ConfigParser::VarsWithoutSwitch() const {
  VarList vars;
  std::copy_if(file_order_.begin(), file_order_.end(), std::back_inserter(vars), [this](const VarInfo* var) {
    const auto is_on_page = [this](const auto& place) { return HasGroup(place.first); };
    return var->component_type == kSwitch && var->switch_var == nullptr &&
           std::any_of(var->module_places.begin(), var->module_places.end(), is_on_page);
  });
  return vars;
}

bool ConfigParser::GetVarPosOffset(const std::string& cmd, const std::string& var_id,
                                   std::uint32_t payload_length,
                                   std::pair<std::uint32_t, std::uint32_t>& pos_offset) {
  VarInfo* var = FindById(var_id);
  if (var == nullptr) {
    TraceLookUp("(): ERROR. This var_id does not exist. Detail: var_id = " + var_id +
                ", file_path = " + path_);
    return false;
  }
  return GetVarPosOffset(cmd, *var, payload_length, pos_offset);
}

bool ConfigParser::GetVarPosOffset(const std::string& cmd, VarInfo& var, std::uint32_t payload_length,
                                   std::pair<std::uint32_t, std::uint32_t>& pos_offset) {
  const auto kind = cmd_kind_map_.find(cmd);
  if (kind == cmd_kind_map_.end()) {
    TraceLookUp("(): don't have this command");
    return false;
  }
  if (var.set_cmd.empty() && var.get_cmd.empty()) {
    TraceLookUp("(): this var not supported. var_name = " + var.var_name);
    return false;
  }
  const auto lock = LockValues();
  if (TakesWholePayload(var.var_name)) {
    var.set_start_pos = 0;
    var.var_len = payload_length;
    pos_offset = {0, payload_length};
  } else {
    pos_offset = {kind->second == kSetKind ? var.set_start_pos : var.get_start_pos, var.var_len};
  }
  return true;
}

std::string ConfigParser::CurrentValue(const VarInfo& var) const {
  const auto lock = LockValues();
  return var.current_val;
}

VarInfo* ConfigParser::FindById(const std::string& var_id) const {
  const auto found = var_map_.find(var_id);
  return found == var_map_.end() ? nullptr : found->second.get();
}

VarInfo* ConfigParser::FindByName(const std::string& var_name) const {
  const auto found = by_name_.find(var_name);
  return found == by_name_.end() ? nullptr : found->second;
}

}  // namespace varkel
