#pragma once

#include <string>
#include <string_view>

namespace varkel {

/// The text with everything that is not UTF-8 replaced, since a sensor's text may hold any bytes and JSON may
/// not. Equal bytes give equal texts.
std::string Utf8(const std::string& text);

/// UTF-8 text as a JSON string, quotes included. Control characters are escaped, so it stays on one line.
std::string JsonText(std::string_view text);

/// Builds a JSON object on one line; its keys are in the order of the calls.
class JsonObject {
 public:
  JsonObject& Text(const char* key, std::string_view text) { return Raw(key, JsonText(text)); }
  JsonObject& Number(const char* key, long long number) { return Raw(key, std::to_string(number)); }
  JsonObject& Bool(const char* key, bool value) { return Raw(key, value ? "true" : "false"); }
  /// `json` is JSON already.
  JsonObject& Raw(const char* key, std::string_view json);

  std::string str() const { return text_ + "}"; }

 private:
  std::string text_ = "{";
};

/// Builds a JSON array on one line or, with `indent`, with one element per line, indented by that many
/// spaces.
template <typename List, typename Format>
std::string JsonList(const List& list, const Format& format, int indent = -1) {
  const std::string line =
      indent < 0 ? std::string() : "\n" + std::string(static_cast<std::size_t>(indent), ' ');
  std::string text = "[";
  for (const auto& element : list) {
    if (text.size() > 1) text += indent < 0 ? ", " : ",";
    text += line + format(element);
  }
  if (indent >= 2 && text.size() > 1) text += "\n" + std::string(static_cast<std::size_t>(indent - 2), ' ');
  return text + "]";
}

}  // namespace varkel
