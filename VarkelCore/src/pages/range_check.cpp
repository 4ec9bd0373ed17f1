#include "VarkelCore/src/pages/range_check.h"

#include <QDebug>
#include <cmath>
#include <exception>
#include <regex>
#include <stdexcept>
#include <string>

#include "libquarn/Platform/src/text_number.h"

namespace varkel {

namespace {

const char* FaultWords(const std::exception& error) {
  return dynamic_cast<const std::out_of_range*>(&error) != nullptr ? " Out of range: "
                                                                   : " Invalid argument: ";
}

bool HasRange(const VarInfo& var) {
  return var.range_min != 0 && var.range_max != 0;
}

bool Within(const VarInfo& var, double value) {
  return var.range_min <= value && value <= var.range_max;
}

bool LooksLikeIp(const std::string& text) {
  static const std::regex pattern(
      R"(^((25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\.){3}(25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)$)");
  constexpr std::size_t kLongestIp = 15;  // keeps long texts away from the recursive matcher
  return text.size() <= kLongestIp && std::regex_match(text, pattern);
}

bool LooksLikeMac(const std::string& text) {
  static const std::regex pattern("^([0-9A-Fa-f]{2}[:]){5}([0-9A-Fa-f]{2})$");
  constexpr std::size_t kMacLength = 17;
  return text.size() == kMacLength && std::regex_match(text, pattern);
}

}  // namespace

bool IsWithinRange(const ConfigParser& catalogue, const VarInfo* var, const QString& key) {
  static constexpr char kOperation[] = "VarkelManager::CheckVarIsWithinRange";
  if (var == nullptr) {
    qDebug() << kOperation << " Can't find this var info for range check. var_info =" << key;
    return true;
  }
  if (var->var_type == "string" || !HasRange(*var)) return true;
  try {
    const float shown = quarn::lidar::TextToFloat(catalogue.CurrentValue(*var));
    return Within(*var, std::trunc(static_cast<double>(shown * var->set_coefficient)));
  } catch (const std::exception& error) {
    qDebug() << kOperation << FaultWords(error) << error.what();
    return false;
  }
}

RangeFault JudgePageValue(const ConfigParser& catalogue, const VarInfo& var) {
  if (var.permission == 0 || var.var_type == "string") return RangeFault::kNone;
  const std::string value = catalogue.CurrentValue(var);
  if (var.var_type == "raw") return value.size() > var.var_len ? RangeFault::kOutOfRange : RangeFault::kNone;
  if (var.var_type == "IP") return LooksLikeIp(value) ? RangeFault::kNone : RangeFault::kIpFormat;
  if (var.var_type == "MAC") return LooksLikeMac(value) ? RangeFault::kNone : RangeFault::kMacFormat;
  try {
    const int number = quarn::lidar::TextToInt(value);
    return HasRange(var) && !Within(var, number) ? RangeFault::kOutOfRange : RangeFault::kNone;
  } catch (const std::exception& error) {
    qDebug() << "VarkelManager::CheckModuleVarsWithinRange" << FaultWords(error) << error.what();
    return RangeFault::kNotANumber;
  }
}

}  // namespace varkel
