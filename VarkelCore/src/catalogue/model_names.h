#pragma once

#include <string>
#include <vector>

namespace varkel {

/// How a sensor is reached; the numbers are those that QML sees.
enum ConnectType : int { kNetwork = 0, kSerialLines = 1, kKtcToSmallSensor = 2 };

inline constexpr char kZelto[] = "Zelto";
inline constexpr char kZeltoKtc[] = "Zelto-KTC";
inline constexpr char kMarvoKtc[] = "Marvo-KTC";

/// The folder of the model tables, relative to the install root (the process's working directory).
inline constexpr char kTableFolder[] = "./Config/varID";

ConnectType ConnectTypeOf(const std::string& model_name);

/// The models that a user can choose: the base names of the folder's regular files, each once, sorted without
/// regard to case. Hidden files, lock files and "Marvo-KTC", which only a host program selects, are left out.
/// Empty for an unreadable folder.
std::vector<std::string> ListModels(const std::string& folder = kTableFolder);

/// Whether it is the model that only a host program selects, and its table exists.
bool IsHostModel(const std::string& model_name, const std::string& folder = kTableFolder);

}  // namespace varkel
