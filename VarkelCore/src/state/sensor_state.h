#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/values/model_selection.h"

namespace varkel {

/// One variable of a state. All texts are valid UTF-8.
struct StateValue {
  std::string id;
  std::string name;
  std::string page;
  std::string group;
  std::string unit;   ///< without space and parentheses
  std::string text;   ///< as shown
  std::string raw;    ///< the field's bytes as the sensor sent them, "01 a0"; empty if there are none
  bool live = false;  ///< the sensor itself keeps changing it, such as a temperature
};

/// A request that failed, or whose reply lacked some of the values.
struct ReadFailure {
  std::string get;      ///< get command as in the table
  std::string payload;  ///< its payload, hexadecimal digits
  /// The sensor's (1 to 255) or the client's (negative); 0: the reply lacks the fields.
  std::int32_t code = 0;
  std::string reason;            ///< the same in words
  std::vector<std::string> ids;  ///< the variables that are missing because of it
};

/// The value of every variable according to a sensor, a file or a table.
struct SensorState {
  std::string model;
  std::string table;  ///< fingerprint of the model's table (TableFingerprint)
  std::string pn;
  std::string sn;
  std::string time;                                           ///< ISO text in UTC
  std::string reason;                                         ///< why it was saved; may be empty
  std::string tool;                                           ///< version of the program that created it
  std::vector<std::pair<std::string, std::string>> versions;  ///< name and text
  std::vector<StateValue> values;                             ///< in the order of the pages
  std::vector<ReadFailure> failed;
};

/// The variables that a state holds: everything readable on the pages, in page order, each once. Action and
/// upgrade rows are left out, with all variables that share their get command, since reading them would
/// trigger the action.
std::vector<VarInfo*> StateVars(const ConfigParser& catalogue);

/// A state without values: model, table, version of the program and the present time.
SensorState EmptyState(const Model& model);

/// The given value with the variable's page, group and description.
StateValue MakeStateValue(const ConfigParser& catalogue, const VarInfo& var, const std::string& text,
                          std::string raw);

/// Every variable with the default of the model's table.
SensorState DefaultState(const Model& model);

/// SHA-256 of a table file as hexadecimal digits; empty if it can't be read.
std::string TableFingerprint(const std::string& path);

/// The version of this program, "1.0.1".
std::string ToolVersion();

}  // namespace varkel
