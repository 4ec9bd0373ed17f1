#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/name_index.h"
#include "VarkelCore/src/catalogue/var_info.h"

namespace varkel {

class CsvRow;
class CsvTable;

/// The catalogue of one sensor model, loaded from its table (CSV, one variable a row).
///
/// A load makes a new catalogue; nothing is ever removed from it. Whoever uses a `VarInfo` pointer keeps
/// the catalogue alive (it is handed around as a shared pointer).
///
/// Threads: loading is done by one thread before the catalogue is shared. Afterwards everything is constant
/// but for the guarded fields of `VarInfo`; readers and writers of those hold `LockValues`.
class ConfigParser {
 public:
  using VarList = std::vector<VarInfo*>;
  using SwitchPlace = std::array<std::int32_t, 3>;  ///< module, group (from 0), position it switches

  /// Opens the table file; a file that can't be opened makes ExtractConfigInfo return false.
  explicit ConfigParser(std::string path);
  ~ConfigParser();
  ConfigParser(const ConfigParser&) = delete;
  ConfigParser& operator=(const ConfigParser&) = delete;

  /// Reads the table and builds the catalogue; called once. False only when no file is open (any more).
  /// Raises std::runtime_error ("Can't find a column named …", malformed quoting) or the conversion errors
  /// of text_number.h; RowBeingRead then tells where.
  bool ExtractConfigInfo();

  /// For messages about a failed load: the variable and row that was being read, e.g.
  /// `variable 3-12 "Motor speed", row 17`; empty before the first row.
  std::string RowBeingRead() const;

  /// Fills (start position, length) of the variable's field in the payload of the command `cmd`: the set
  /// position when `cmd` is a set command, else the get position. `payload_length` only matters for
  /// "Shared Secret Key", whose length is whatever the payload holds. Takes the value lock itself.
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

  using VarMap = std::map<std::string, std::unique_ptr<VarInfo>>;
  using CommandLists = std::map<std::string, VarList>;
  using CommandKinds = std::map<std::string, std::string>;

  /// Where the command of the row before stands, which most rows share; the maps' ends ahead of the first
  /// row.
  struct LastCommand {
    CommandLists::iterator list;
    CommandKinds::iterator kind;
  };

  void LoadRow(const CsvRow& row, const Columns& columns);
  void AddModule(const CsvRow& row);
  VarInfo* StoreRow(const CsvRow& row, const Columns& columns);
  VarInfo& Record(std::string var_id, std::string_view var_name);
  void AddToCommand(std::string_view cmd, VarInfo* var, const char* kind, CommandLists& lists,
                    LastCommand& last);
  void Place(VarInfo* var, std::string_view function_module);
  void NameApart(VarInfo* var);
  void LayOutPayloads();
  void LinkSwitches();

  std::string path_;
  std::unique_ptr<CsvTable> table_;
  VarMap var_map_;
  VarMap::iterator last_in_map_ = var_map_.end();  // the row before
  VarList file_order_;
  CommandKinds cmd_kind_map_;
  CommandLists get_cmd_map_;
  CommandLists set_cmd_map_;
  LastCommand last_get_{get_cmd_map_.end(), cmd_kind_map_.end()};
  LastCommand last_set_{set_cmd_map_.end(), cmd_kind_map_.end()};
  std::vector<std::vector<std::string>> module_titles_;
  std::vector<std::vector<VarList>> module_vars_;
  VarList standalone_vars_;
  std::map<VarInfo*, SwitchPlace> switch_map_;
  std::unordered_map<std::string, const VarInfo*> set_only_names_;  // who took the name first
  NameIndex by_name_;
  std::string row_being_read_;
  mutable std::mutex value_mutex_;
};

}  // namespace varkel
