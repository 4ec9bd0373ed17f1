#pragma once

#include <filesystem>
#include <string>

namespace quarn::platform {

/// The path that a UTF-8 text names. A path made from the text as it is would take it for Latin-1 on Windows.
inline std::filesystem::path FilePath(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

/// The path as UTF-8.
inline std::string PathText(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace quarn::platform
