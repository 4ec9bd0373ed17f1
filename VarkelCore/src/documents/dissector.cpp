#include "VarkelCore/src/documents/dissector.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>

#include "VarkelCore/src/documents/command_list.h"
#include "embedded/texts.h"

namespace varkel {
namespace {

constexpr std::string_view kPlaceOfTables = "\nlocal models = {}\n";

std::string LuaText(std::string_view text) {
  std::string lua = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') lua += '\\';
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      std::array<char, 8> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "\\%03u", static_cast<unsigned>(byte));
      lua += escaped.data();
    } else {
      lua += c;
    }
  }
  return lua + "\"";
}

/// The shortest text that Lua parses to the same number.
std::string LuaNumber(float number) {
  const auto wide = static_cast<double>(number);
  if (std::isnan(wide)) return "0/0";
  if (std::isinf(wide)) return wide > 0 ? "1/0" : "-1/0";
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), wide).ptr;
  return {text.data(), end};
}

/// A name's form in a display filter: letters, digits and single "_".
std::string FilterName(std::string_view name) {
  std::string key;
  for (const char c : name) {
    const bool is_upper = 'A' <= c && c <= 'Z';
    if (is_upper || ('a' <= c && c <= 'z') || ('0' <= c && c <= '9')) {
      key += is_upper ? static_cast<char>(c - 'A' + 'a') : c;
    } else if (!key.empty() && key.back() != '_') {
      key += '_';
    }
  }
  if (!key.empty() && key.back() == '_') key.pop_back();
  return key.empty() ? "unnamed" : key;
}

/// Makes filter names unique.
class FilterNames {
 public:
  std::string Take(const std::string& name, const std::string& addition) {
    std::string key = FilterName(name);
    while (!taken_.insert(key).second) key += "_" + FilterName(addition);
    return key;
  }

 private:
  std::set<std::string> taken_;
};

/// The tables of one model, in the form described at the top of ktc_dissector.lua.
class ModelTables {
 public:
  std::string Text(const DissectorModel& model, const std::string& key) {
    std::string commands;
    for (const WireCommand& command : ListCommands(*model.catalogue)) commands += CommandRow(command);
    return "  {name = " + LuaText(model.name) + ", key = " + LuaText(key) + ",\n   variables = {\n" +
           variables_ + "   },\n   commands = {\n" + commands + "   }},\n";
  }

 private:
  std::string CommandRow(const WireCommand& command) {
    std::string row = "    [" + LuaText(command.key) + "] = {name = " + LuaText(command.Name());
    if (!command.read.empty()) row += ", reads = " + Layout(command.read, AnswersOneRequest(command));
    if (!command.written.empty()) row += ", writes = " + Layout(command.written, false);
    if (command.has_angles) {
      row += ", is_fov = true";  // angles follow the variables, so no size can be told
    } else {
      if (const auto size = PayloadSize(command.read)) row += ", read_size = " + std::to_string(*size);
      if (const auto size = PayloadSize(command.written)) row += ", write_size = " + std::to_string(*size);
    }
    if (command.is_upgrade) row += ", is_upgrade = true";
    return row + "},\n";
  }

  /// Whether requests with this command differ in their payload, so that a reply holds only some of the
  /// variables.
  static bool AnswersOneRequest(const WireCommand& command) {
    for (const CommandField& field : command.read) {
      if (field.var->get_cmd_payload_bytes != command.read.front().var->get_cmd_payload_bytes) return true;
    }
    return false;
  }

  std::string Layout(const std::vector<CommandField>& fields, bool names_request) {
    std::string layout = "{";
    for (const CommandField& field : fields) {
      if (layout.size() > 1) layout += ", ";
      layout += "{" + std::to_string(NumberOf(field)) + ", " + std::to_string(field.position);
      if (names_request) layout += ", " + LuaText(Hex(field.var->get_cmd_payload_bytes));
      layout += "}";
    }
    return layout + "}";
  }

  static std::string Hex(const std::vector<std::uint8_t>& bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const std::uint8_t byte : bytes) {
      hex += kDigits[byte / kDigits.size()];
      hex += kDigits[byte % kDigits.size()];
    }
    return hex;
  }

  std::size_t NumberOf(const CommandField& field) {
    const auto [found, is_new] = numbers_.try_emplace(field.var, numbers_.size() + 1);
    if (is_new) AddVariable(field);
    return found->second;
  }

  void AddVariable(const CommandField& field) {
    const VarInfo& var = *field.var;
    const std::string name = var.var_name.empty() ? var.var_id : var.var_name;
    variables_ += "    {key = " + LuaText(names_.Take(name, var.var_id)) +
                  ", name = " + LuaText(name + var.unit) + ", type = " + LuaText(var.var_type) +
                  ", length = " + (field.length ? std::to_string(*field.length) : "-1");
    if (var.coefficient != 1.0F) variables_ += ", scale = " + LuaNumber(var.coefficient);
    if (var.set_coefficient != 1.0F) variables_ += ", set_scale = " + LuaNumber(var.set_coefficient);
    if (!var.option_labels.empty()) {
      std::string labels;
      for (const auto& [value, label] : var.option_labels) {
        labels += (labels.empty() ? "[" : ", [") + std::to_string(value) + "] = " + LuaText(label);
      }
      variables_ += ", labels = {" + labels + "}";
    }
    variables_ += "},\n";
  }

  FilterNames names_;
  std::map<const VarInfo*, std::size_t> numbers_;  // Lua counts from 1
  std::string variables_;
};

}  // namespace

std::string WiresharkDissector(std::span<const DissectorModel> models) {
  std::string tables;
  FilterNames keys;
  for (const DissectorModel& model : models) {
    tables += ModelTables().Text(model, keys.Take(model.name, "2"));
  }
  std::string lua(embedded::kKtcDissector);
  const std::size_t place = lua.find(kPlaceOfTables);
  if (place == std::string::npos) throw std::logic_error("the dissector has no place for the tables");
  return lua.replace(place, kPlaceOfTables.size(), "\nlocal models = {\n" + tables + "}\n");
}

}  // namespace varkel
