#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace varkel {

/// Text for HTML and SVG, between tags and in attributes.
std::string HtmlText(std::string_view text);

/// Text for a cell of a Markdown table: on one line, with nothing that Markdown reads as its own.
std::string MarkdownText(std::string_view text);

/// The first characters of a UTF-8 text, as many as fit into `most`, the last one "…" where some are cut off.
std::string Shortened(std::string_view text, std::size_t most);

/// Characters of a UTF-8 text.
std::size_t CharacterCount(std::string_view text);

/// "1 byte", "2 bytes".
std::string Counted(std::size_t count, const std::string& what);

}  // namespace varkel
