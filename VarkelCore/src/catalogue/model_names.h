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

/// The models that a user can choose: base names of the folder's files, sorted without regard to case,
/// without "Marvo-KTC", which only a host program selects. An unreadable folder has none.
std::vector<std::string> ListModels(const std::string& folder = kTableFolder);

/// Whether it is the model that only a host program selects, and its table is there.
bool IsHostModel(const std::string& model_name, const std::string& folder = kTableFolder);

}  // namespace varkel
