#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/var_info.h"

namespace varkel {

class CsvColumn;
class CsvRow;
class CsvTable;

/// The catalogue of one sensor model, loaded from its table (CSV, one variable per row).
///
/// Each load makes a new catalogue, from which nothing is ever removed. Code that uses a `VarInfo` pointer
/// keeps the catalogue alive through a shared pointer.
///
/// Threads: one thread loads the table before the catalogue is shared. Afterwards everything is constant
/// except the guarded fields of `VarInfo`; readers and writers of those hold `LockValues`.
class ConfigParser {
 public:
  using VarList = std::vector<VarInfo*>;
  using SwitchPlace = std::array<std::int32_t, 3>;  ///< module, group (from 0), position it switches

  /// Opens the table file; a file that can't be opened makes ExtractConfigInfo return false.
  explicit ConfigParser(std::string path);
  ~ConfigParser();
  ConfigParser(const ConfigParser&) = delete;
  ConfigParser& operator=(const ConfigParser&) = delete;

  /// Reads the table and builds the catalogue; called once. False only if the file is not open. Raises
  /// std::runtime_error ("Can't find a column named …", malformed quoting) or the conversion errors of
  /// text_number.h; RowBeingRead then says at which row.
  bool ExtractConfigInfo();

  /// After a failed load, the variable and row at which it failed: `variable 3-12 "Motor speed", row 17`.
  /// Empty before the first row.
  std::string RowBeingRead() const;

  /// Oddities of the table that did not stop the load: one sentence each, naming variable and row.
  const std::vector<std::string>& load_warnings() const { return load_warnings_; }
  /// The variables on the pages that are shown as a switch row but have no switch, in file order.
  VarList VarsWithoutSwitch() const;

  /// Sets `pos_offset` to (start position, length) of the variable's field in the payload of the command
  /// `cmd`: the set position if `cmd` is a set command, otherwise the get position. `payload_length` only
  /// matters for "Shared Secret Key", whose field is the whole payload. Takes the value lock itself.
  bool GetVarPosOffset(const std::string& cmd, const std::string& var_id, std::uint32_t payload_length,
                       std::pair<std::uint32_t, std::uint32_t>& pos_offset);
  /// The same for a record of this catalogue.
  bool GetVarPosOffset(const std::string& cmd, VarInfo& var, std::uint32_t payload_length,
                       std::pair<std::uint32_t, std::uint32_t>& pos_offset);

  /// Guards current_val, var_len and set_start_pos of all records.
  std::unique_lock<std::mutex> LockValues() const { return std::unique_lock<std::mutex>(value_mutex_); }
  std::string CurrentValue(const VarInfo& var) const;

  VarInfo* FindById(const std::string& var_id) const;
  /// The first variable of that name in file order.
  VarInfo* FindByName(const std::string& var_name) const;

  const std::string& path() const { return path_; }
  const std::map<std::string, std::unique_ptr<VarInfo>>& var_map() const { return var_map_; }
  const std::map<std::string, std::string>& cmd_kind_map() const { return cmd_kind_map_; }
  const std::map<std::string, VarList>& get_cmd_map() const { return get_cmd_map_; }
  const std::map<std::string, VarList>& set_cmd_map() const { return set_cmd_map_; }
  const std::vector<std::vector<std::string>>& module_titles() const { return module_titles_; }
  const std::vector<std::vector<VarList>>& module_vars() const { return module_vars_; }
  const VarList& standalone_vars() const { return standalone_vars_; }
  const std::map<VarInfo*, SwitchPlace>& switch_map() const { return switch_map_; }

 private:
  struct Columns;  // the table's columns by name

  using CommandLists = std::map<std::string, VarList>;

  void LoadRow(const CsvRow& row, const Columns& columns);
  void AddModule(const CsvRow& row);
  VarInfo* StoreRow(const CsvRow& row, const Columns& columns);
  VarInfo& Record(const std::string& var_id, std::string_view var_name);
  void AddToCommand(std::string_view cmd, VarInfo* var, const char* kind, CommandLists& lists);
  void Place(VarInfo* var, std::string_view function_module);
  bool HasGroup(const ModulePlace& place) const;
  VarList& Group(const ModulePlace& place);  // one that exists
  void WarnOfPartialNumber(const CsvRow& row, const Columns& columns, const CsvColumn& column);
  void Disambiguate(VarInfo* var);
  void LayOutPayloads();
  void LinkSwitches();

  std::string path_;
  std::unique_ptr<CsvTable> table_;
  std::map<std::string, std::unique_ptr<VarInfo>> var_map_;
  VarList file_order_;
  std::map<std::string, std::string> cmd_kind_map_;
  CommandLists get_cmd_map_;
  CommandLists set_cmd_map_;
  std::vector<std::vector<std::string>> module_titles_;
  std::vector<std::vector<VarList>> module_vars_;
  VarList standalone_vars_;
  std::map<VarInfo*, SwitchPlace> switch_map_;
  std::unordered_map<std::string, const VarInfo*> set_only_names_;  // the first variable of the name
  std::unordered_map<std::string_view, VarInfo*> by_name_;          // the keys are the records' own names
  std::vector<std::string> load_warnings_;
  std::string row_being_read_;
  mutable std::mutex value_mutex_;
};

}  // namespace varkel
