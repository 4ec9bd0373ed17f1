#include "VarkelCore/src/catalogue/lint_row.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "VarkelCore/src/catalogue/command_text.h"
#include "VarkelCore/src/catalogue/table_cells.h"
#include "VarkelCore/src/catalogue/var_info.h"
#include "libquarn/Platform/src/text_number.h"

namespace varkel {
namespace {

struct Type {
  std::string_view name;
  std::uint32_t min_size;  ///< bytes on the wire
  std::uint32_t max_size;
  bool is_number;
  bool can_be_written;
};

constexpr std::int32_t kLastByteCommand = 0xFF;
constexpr std::uint32_t kAnySize = std::numeric_limits<std::uint32_t>::max();
constexpr std::array<Type, 17> kTypes = {{{"IP", 4, 4, false, true},
                                          {"MAC", 6, 6, false, true},
                                          {"uint8", 1, 1, true, true},
                                          {"uint16", 2, 2, true, true},
                                          {"uint32", 4, 4, true, true},
                                          {"uint64", 8, 8, true, true},
                                          {"int8", 1, 1, true, true},
                                          {"int16", 2, 2, true, true},
                                          {"int32", 4, 4, true, true},
                                          {"int64", 8, 8, true, true},
                                          {"float32", 4, 4, true, true},
                                          {"double", 8, 8, true, true},
                                          {"string", 1, kAnySize, false, false},
                                          {"HWVER", 16, 16, false, false},
                                          {"SWVER_YMD", 8, 8, false, false},
                                          {"DT", 1, 8, false, false},
                                          {"raw", 0, kAnySize, false, true}}};

const Type* FindType(const std::string& name) {
  const auto* const found = std::ranges::find(kTypes, name, &Type::name);
  return found == kTypes.end() ? nullptr : found;
}

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

/// The checks of one row; each reports its findings.
class RowLint {
 public:
  RowLint(const LintRow& row, const PageGroups& pages, LintReport& report)
      : row_(row), pages_(pages), report_(report) {}

  void Run() {
    for (const char* column : {"Index", "SetIndex", "Permission", "VarLen", "TimerUpdate"}) {
      CheckInteger(column);
    }
    for (const char* column : {"Get", "Set"}) CheckCommand(column);
    for (const char* column : {"Coefficient", "SetCoefficient"}) CheckCoefficient(column);
    CheckType();
    CheckPayload();
    CheckChoices();
    CheckPlaces();
    if (!row_["Set"].empty()) CheckWritable();
  }

 private:
  void Error(const char* column, const std::string& text) {
    report_.Error(row_.line, column, row_.Name() + ": " + text);
  }
  void Warning(const char* column, const std::string& text) {
    report_.Warning(row_.line, column, row_.Name() + ": " + text);
  }

  bool TakesWholePayload() const { return varkel::TakesWholePayload(row_["VarName"]); }

  void CheckInteger(const char* column) {
    const std::string& cell = row_[column];
    if (cell.empty() || (TakesWholePayload() && column == std::string_view("VarLen"))) return;
    try {
      IntCell(cell, 0);
      if (!IsWholeNumber(cell)) {
        Warning(column, Quoted(cell) + " only begins with a number; drop the rest.");
      }
    } catch (const std::exception&) {
      Error(column, Quoted(cell) + " is not a 32-bit integer; write one.");
    }
  }

  void CheckCommand(const char* column) {
    const std::string& cell = row_[column];
    if (cell.empty()) return;
    const bool is_hex = cell.starts_with("0x") || cell.starts_with("0X");
    const bool is_octal = !is_hex && cell.starts_with('0');
    const std::string_view digits = is_hex ? "0123456789abcdefABCDEF" : is_octal ? "01234567" : "0123456789";
    bool is_number = cell.find_first_not_of(digits, is_hex ? 2 : 0) == std::string::npos &&
                     cell.size() > (is_hex ? 2U : 0U);
    try {
      ParseCommandText(cell);
    } catch (const std::exception&) {
      is_number = false;
    }
    if (!is_number) {
      Error(column, "the command " + Quoted(cell) + " is not a number; write 33 or 0x21.");
    } else if (!IsExtendedCommand(cell) && quarn::lidar::TextToInt(cell, 0) > kLastByteCommand) {
      Error(column, "the command " + Quoted(cell) +
                        " is not a byte; write 0x00 to 0xFF, or all digits of a four-byte code.");
    }
  }

  void CheckCoefficient(const char* column) {
    const std::string& cell = row_[column];
    try {
      const float coefficient = FloatCell(cell, 1.0F);
      if (!cell.empty() && !IsWholeNumber(cell)) {
        Error(column, Quoted(cell) + " only begins with a number; write it with a decimal point.");
      } else if (coefficient == 0.0F) {
        Error(column, "a coefficient of 0 loses every value; leave the cell empty for 1.");
      } else if (!std::isfinite(coefficient)) {
        Error(column, Quoted(cell) + " can't be a factor; leave the cell empty for 1.");
      }
    } catch (const std::exception&) {
      Error(column,
            Quoted(cell) + " is not a number; write it with a decimal point, or leave the cell empty for 1.");
    }
  }

  void CheckType() {
    const Type* type = FindType(row_["VarType"]);
    if (type == nullptr) {
      Error("VarType", "there is no type " + Quoted(row_["VarType"]) + "; use a known one, such as uint16.");
      return;
    }
    const auto length = Length();
    if (!length || TakesWholePayload() || (type->min_size <= *length && *length <= type->max_size)) return;
    std::string sizes = std::to_string(type->min_size);
    if (type->max_size == kAnySize) {
      sizes += " or more";
    } else if (type->max_size != type->min_size) {
      sizes += " to " + std::to_string(type->max_size);
    }
    const std::string text = row_.Name() + ": " + row_["VarType"] + " takes " + sizes +
                             " bytes, but VarLen is " + std::to_string(*length) +
                             "; correct one or the other.";
    if (row_["Set"].empty()) {
      report_.Error(row_.line, "VarLen", text);
    } else {
      report_.Misplaced(row_.line, "VarLen", "set command " + row_["Set"] + ", " + text);
    }
  }

  std::optional<std::uint32_t> Length() const {
    try {
      return static_cast<std::uint32_t>(IntCell(row_["VarLen"], 0));
    } catch (const std::exception&) {
      return std::nullopt;  // reported already
    }
  }

  void CheckWritable() {
    const std::string& type = row_["VarType"];
    const Type* known = FindType(type);
    if (known != nullptr && !known->can_be_written) {
      Error("Set", "a " + type + " can't be written; leave Set empty.");
    }
    if (type == "uint32" || type == "uint64") {
      Warning("VarType", "a " + type + " can only be set to 0; use int64 or a smaller type.");
    }
    if (row_["Get"].empty() && type != "raw") {
      Warning("Get", "a save sends this field with a value that was never read; give it a get command.");
    }
  }

  void CheckPayload() {
    const std::string& cell = row_["GetCmdPayload"];
    if (cell.empty()) return;
    try {
      const GetPayloadCell payload = ParseGetPayload(cell);
      if (payload.bytes.empty()) {
        Error("GetCmdPayload", Quoted(cell) + " is ignored; write 0x and two digits per byte.");
      } else if (payload.digits.size() % 2 != 0) {
        Error("GetCmdPayload",
              "the last digit of " + Quoted(cell) + " is not sent; write two digits per byte.");
      }
    } catch (const std::exception&) {
      Error("GetCmdPayload", Quoted(cell) + " is not hexadecimal; write 0x and two digits per byte.");
    }
  }

  void CheckChoices() {
    OptionsCell options;
    std::map<std::int32_t, std::string> labels;
    try {
      options = ParseOptions(row_["Options"]);
    } catch (const std::exception&) {
      Error("Options", Quoted(row_["Options"]) +
                           " contains something other than numbers; write 0|1|2, or 1~100 for a range.");
      return;
    }
    try {
      labels = ParseOptionLabels(row_["OptionDescription"]);
    } catch (const std::exception&) {
      Error("OptionDescription",
            "a label has no number before its \"_\"; write 0_Off and 1_On, one per line.");
    }
    CheckLabels(options.values, labels);
    const bool has_range = row_["Options"].find('~') != std::string::npos && options.values.empty();
    if (has_range) CheckRange(options);
    CheckDefault(options, has_range);
  }

  void CheckLabels(const std::vector<std::int32_t>& options,
                   const std::map<std::int32_t, std::string>& labels) {
    for (const auto& [value, label] : labels) {
      if (std::ranges::count(options, value) > 0) continue;
      Warning("OptionDescription", "the label " + Quoted(label) + " belongs to no option; add " +
                                       std::to_string(value) + " to Options, or drop the label.");
    }
    for (const std::int32_t option : options) {
      if (labels.empty() || labels.contains(option)) continue;
      Warning("Options", "option " + std::to_string(option) + " has no label; add a line \"" +
                             std::to_string(option) + "_...\" to OptionDescription.");
    }
  }

  void CheckRange(const OptionsCell& options) {
    const Type* type = FindType(row_["VarType"]);
    if (type != nullptr && !type->is_number) {
      Error("Options", "the type " + row_["VarType"] + " has no range; leave Options empty.");
    }
    if (options.range_min > options.range_max) {
      Error("Options", "the range " + row_["Options"] + " is empty; write the smaller number first.");
    }
  }

  void CheckDefault(const OptionsCell& options, bool has_range) {
    const std::string& cell = row_["DefaultValue"];
    const Type* type = FindType(row_["VarType"]);
    if (cell.empty() || type == nullptr || !type->is_number) return;
    if (!IsWholeNumber(cell)) {
      Warning("DefaultValue", Quoted(cell) + " is not a number; write one with a decimal point.");
      return;
    }
    const double value = quarn::lidar::TextToDouble(cell);
    const bool in_range = !has_range || (options.range_min <= value && value <= options.range_max);
    const auto is_value = [value](std::int32_t option) { return option == value; };
    if (!in_range || (!options.values.empty() && std::ranges::none_of(options.values, is_value))) {
      Warning("DefaultValue", "the default " + cell + " is not among the Options " + row_["Options"] +
                                  "; correct one or the other.");
    }
  }

  void CheckPlaces() {
    const std::string& cell = row_["FunctionModule"];
    for (std::size_t begin = 0; begin < cell.size();) {
      const std::size_t end = std::min(cell.find('|', begin), cell.size());
      if (end > begin) CheckPlace(std::string_view(cell).substr(begin, end - begin));
      begin = end + 1;
    }
  }

  void CheckPlace(std::string_view piece) {
    const std::string text = Quoted(std::string(piece));
    std::optional<PlaceCell> place;
    try {
      place = TakePlace(piece);
    } catch (const std::exception&) {
    }
    if (!place) {
      Error("FunctionModule", "the place " + text + " is not four numbers; write page_group_position_kind.");
      return;
    }
    if (place->component < kTwoTexts || place->component > kStandalone) {
      Error("FunctionModule", "the place " + text + " has no kind from 0 to 6 as its fourth number.");
    }
    const bool is_on_page = place->module >= 0 && std::cmp_less(place->module, pages_.size()) &&
                            place->group >= 0 &&
                            std::cmp_less(place->group, pages_[static_cast<std::size_t>(place->module)]);
    if (place->component != kStandalone && !is_on_page) {
      Error("FunctionModule", "no row before this one defines the page or group of the place " + text + ".");
    }
    const bool chooses = place->component == kComboBox || place->component == kFieldOfView;
    if (chooses && row_["Options"].empty()) Error("Options", "a list to choose from needs Options.");
  }

  const LintRow& row_;
  const PageGroups& pages_;
  LintReport& report_;
};

}  // namespace

void LintCells(const LintRow& row, const PageGroups& pages, LintReport& report) {
  RowLint(row, pages, report).Run();
}

}  // namespace varkel
