#include "VarkelCore/src/documents/markup.h"

#include <algorithm>

namespace varkel {
namespace {

bool IsFirstByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

}  // namespace

std::string HtmlText(std::string_view text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      default:
        html += IsControl(c) ? ' ' : c;
    }
  }
  return html;
}

std::string MarkdownText(std::string_view text) {
  constexpr std::string_view kSpecial = "\\`*_[]<>|#~&";
  std::string markdown;
  for (const char c : text) {
    if (kSpecial.find(c) != std::string_view::npos) markdown += '\\';
    markdown += IsControl(c) ? ' ' : c;
  }
  return markdown;
}

std::size_t CharacterCount(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, IsFirstByte));
}

std::string Shortened(std::string_view text, std::size_t most) {
  if (CharacterCount(text) <= most) return std::string(text);
  std::size_t end = 0;
  for (std::size_t characters = 0; end < text.size(); ++end) {
    if (IsFirstByte(text[end]) && ++characters > most - 1) break;
  }
  return std::string(text.substr(0, end)) + "…";
}

std::string Counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace varkel
