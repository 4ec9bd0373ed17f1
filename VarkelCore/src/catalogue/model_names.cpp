#include "VarkelCore/src/catalogue/model_names.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>
#include <tuple>

#include "libquarn/Platform/src/file_path.h"

namespace varkel {

using quarn::platform::FilePath;
using quarn::platform::PathText;

namespace {

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

bool PrecedesWithoutCase(const std::string& a, const std::string& b) {
  return std::make_tuple(LowerCase(a), a) < std::make_tuple(LowerCase(b), b);
}

/// Spreadsheet programs put ".~lock.Quenta.csv#" or "~$Quenta.csv" next to a table that they have open.
bool IsLockFile(const std::string& base_name) {
  return base_name.empty() || base_name.starts_with("~$");
}

}  // namespace

ConnectType ConnectTypeOf(const std::string& model_name) {
  if (model_name == kZelto) return kSerialLines;
  if (model_name == kZeltoKtc || model_name == kMarvoKtc) return kKtcToSmallSensor;
  return kNetwork;
}

std::vector<std::string> ListModels(const std::string& folder) {
  std::vector<std::string> models;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(FilePath(folder), error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unreadable;  // for example a link to itself
    if (!entry->is_regular_file(unreadable)) continue;
    const std::string file_name = PathText(entry->path().filename());
    const std::string base_name = file_name.substr(0, file_name.find('.'));
    if (base_name != kMarvoKtc && !IsLockFile(base_name)) models.push_back(base_name);
  }
  std::sort(models.begin(), models.end(), PrecedesWithoutCase);
  models.erase(std::unique(models.begin(), models.end()), models.end());
  return models;
}

bool IsHostModel(const std::string& model_name, const std::string& folder) {
  std::error_code error;
  return model_name == kMarvoKtc &&
         std::filesystem::is_regular_file(FilePath(folder + "/" + model_name + ".csv"), error);
}

std::vector<std::string> ListTables(const std::string& folder) {
  std::vector<std::string> models = ListModels(folder);
  if (IsHostModel(kMarvoKtc, folder)) models.emplace_back(kMarvoKtc);
  return models;
}

std::string TablePath(const std::string& model_or_file, const std::string& folder) {
  std::error_code error;
  const bool is_path = model_or_file.find_first_of("/\\") != std::string::npos ||
                       std::filesystem::is_regular_file(FilePath(model_or_file), error);
  return is_path ? model_or_file : folder + "/" + model_or_file + ".csv";
}

}  // namespace varkel
