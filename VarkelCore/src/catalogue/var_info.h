#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varkel {

/// Shown in place of a serial number or a version that the sensor has not reported yet.
inline constexpr char kUnknownText[] = "xxxxxxxx";

/// Where the pages show a variable: (module index, group index), both counted from 0.
using ModulePlace = std::pair<std::int32_t, std::int32_t>;

/// How the user interface shows a variable; the fourth number of a `FunctionModule` place.
enum ComponentType : std::int32_t {
  kTwoTexts = 0,
  kTextField = 1,
  kSwitch = 2,
  kComboBox = 3,
  kUpgradeArea = 4,
  kFieldOfView = 5,
  kStandalone = 6,  ///< on no page: restart, reset, logs
};

/// One variable of a sensor model: a row of the model's table.
///
/// The `ConfigParser` that loaded the table owns the record. All fields are constant after loading, except
/// those marked as guarded: `ConfigParser::LockValues` guards them.
struct VarInfo {
  std::string var_id;           ///< "GroupID-Index"
  std::int32_t index = -1;      ///< order within the get command's reply
  std::int32_t set_index = -1;  ///< order within the set command's payload
  std::string get_cmd;          ///< command text, empty: can't be read
  std::string set_cmd;          ///< command text, empty: can't be written
  std::string var_type;
  std::string var_name;
  std::string unit;                 ///< " (unit)", or empty
  std::uint32_t get_start_pos = 0;  ///< byte position in the get reply's payload
  std::uint32_t set_start_pos = 0;  ///< byte position in the set payload; guarded
  std::uint32_t var_len = 0;        ///< field length in bytes; guarded
  std::int32_t permission = 0;      ///< not 0: the user may edit it
  float coefficient = 1.0F;         ///< shown value = raw value x coefficient
  float set_coefficient = 1.0F;     ///< raw value sent = shown value / set_coefficient
  std::string default_val;
  std::string current_val;  ///< the shown text: the last value read or edited; guarded
  std::vector<std::int32_t> options;
  std::map<ModulePlace, std::int32_t> module_places;  ///< place -> position within the group
  std::int32_t option_num = 0;
  std::int32_t component_type = 0;
  bool has_switch = false;        ///< this record is the switch half of a switch row
  VarInfo* switch_var = nullptr;  ///< the variable that switches this one on and off
  std::map<std::int32_t, std::string> option_labels;
  std::string option_description;
  std::int32_t range_min = 0;
  std::int32_t range_max = 0;
  bool timer_update = false;    ///< re-read periodically while its page is shown
  std::string get_cmd_payload;  ///< hexadecimal digits without "0x"
  std::vector<std::uint8_t> get_cmd_payload_bytes;
};

/// Whether the variable's field is its whole payload, whatever the length.
inline bool TakesWholePayload(std::string_view var_name) {
  return var_name == "Shared Secret Key";
}

/// The message for a switch row whose table does not name its switch.
inline std::string MissingSwitchText(const VarInfo& var) {
  return "config file error, Please check the configuration of type 2 of " + var.var_name;
}

}  // namespace varkel
