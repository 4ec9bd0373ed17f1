#pragma once

#include <string>
#include <vector>

namespace varkel {

/// The connection types; QML uses the numbers.
enum ConnectType : int { kNetwork = 0, kSerialLines = 1, kKtcToSmallSensor = 2 };

inline constexpr char kZelto[] = "Zelto";
inline constexpr char kZeltoKtc[] = "Zelto-KTC";
inline constexpr char kMarvoKtc[] = "Marvo-KTC";

/// The folder of the model tables, relative to the install root (the process's working directory).
inline constexpr char kTableFolder[] = "./Config/varID";

ConnectType ConnectTypeOf(const std::string& model_name);

/// The models that a user can choose: the base names of the folder's regular files, each once, sorted without
/// regard to case. Hidden files, lock files and "Marvo-KTC", which only a host program selects, are left out.
/// Empty if the folder can't be read.
std::vector<std::string> ListModels(const std::string& folder = kTableFolder);

/// Whether this is the model that only a host program selects, and its table exists.
bool IsHostModel(const std::string& model_name, const std::string& folder = kTableFolder);

/// Every model that has a table: first those that a user can choose, then the host program's.
std::vector<std::string> ListTables(const std::string& folder = kTableFolder);

/// The path of a table given by its path or its model name.
std::string TablePath(const std::string& model_or_file, const std::string& folder = kTableFolder);

}  // namespace varkel
