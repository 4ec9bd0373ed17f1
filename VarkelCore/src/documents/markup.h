#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace varkel {

/// Escapes text for HTML and SVG, both for content and for attributes.
std::string HtmlText(std::string_view text);

/// Escapes text for a cell of a Markdown table and puts it on one line.
std::string MarkdownText(std::string_view text);

/// The text, cut to at most `most` characters (UTF-8); if cut, the last one is "…".
std::string Shortened(std::string_view text, std::size_t most);

/// The number of characters of a UTF-8 text.
std::size_t CharacterCount(std::string_view text);

/// "1 byte", "2 bytes".
std::string Counted(std::size_t count, const std::string& what);

}  // namespace varkel
