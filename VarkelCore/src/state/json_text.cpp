#include "VarkelCore/src/state/json_text.h"

#include <QString>
#include <array>
#include <cstdio>

namespace varkel {

std::string Utf8(const std::string& text) {
  return QString::fromStdString(text).toStdString();
}

std::string JsonText(std::string_view text) {
  std::string json = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      json += '\\';
      json += c;
    } else if (c == '\n') {
      json += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      std::array<char, 7> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(byte));
      json += escape.data();
    } else {
      json += c;
    }
  }
  return json + "\"";
}

JsonObject& JsonObject::Raw(const char* key, std::string_view json) {
  if (text_.size() > 1) text_ += ", ";
  text_ += JsonText(key) + ": ";
  text_ += json;
  return *this;
}

}  // namespace varkel
