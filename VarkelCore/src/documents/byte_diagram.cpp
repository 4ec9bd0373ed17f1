#include "VarkelCore/src/documents/byte_diagram.h"

#include <algorithm>
#include <string_view>

#include "VarkelCore/src/documents/markup.h"

namespace varkel {
namespace {

constexpr std::uint32_t kBytesALine = 8;
constexpr std::uint32_t kByteWidth = 84;
constexpr std::uint32_t kLineHeight = 44;
constexpr std::uint32_t kGap = 3;             // between lines
constexpr std::uint32_t kCharacterWidth = 7;  // maximum, in the diagram's font
constexpr std::uint32_t kPadding = 6;
// A longer field is drawn with this many bytes; its label gives the real size.
constexpr std::uint32_t kLongestDrawn = 24;

std::string Number(std::uint64_t number) {
  return std::to_string(number);
}

/// Up to two lines of at most `most` characters, broken at a space if there is one.
std::vector<std::string> Wrapped(std::string_view name, std::size_t most) {
  if (CharacterCount(name) <= most) return {std::string(name)};
  std::size_t split = std::string_view::npos;
  for (std::size_t blank = name.find(' '); blank != std::string_view::npos;
       blank = name.find(' ', blank + 1)) {
    if (CharacterCount(name.substr(0, blank)) <= most) split = blank;
  }
  if (split == std::string_view::npos) return {Shortened(name, most)};
  return {std::string(name.substr(0, split)), Shortened(name.substr(split + 1), most)};
}

/// Draws boxes one after the other, wrapping them at the ends of lines.
class Diagram {
 public:
  void Add(const std::string& style, std::uint64_t position, std::uint32_t length, const std::string& name,
           const std::string& title) {
    boxes_ += "<g><title>" + HtmlText(title) + "</title>";
    for (std::uint32_t drawn = 0; drawn < length;) {
      const std::uint32_t column = used_ % kBytesALine;
      const std::uint32_t piece = std::min(length - drawn, kBytesALine - column);
      const std::uint64_t x = std::uint64_t{column} * kByteWidth;
      const std::uint64_t y = std::uint64_t{used_ / kBytesALine} * (kLineHeight + kGap);
      Box(style, x, y, piece * kByteWidth);
      if (drawn == 0) Words(x + kPadding, y, piece * kByteWidth, position, name);
      drawn += piece;
      used_ += piece;
    }
    boxes_ += "</g>";
  }

  std::string Svg(const std::string& label) const {
    const std::uint32_t lines = (used_ + kBytesALine - 1) / kBytesALine;
    const std::uint32_t width = std::min(used_, kBytesALine) * kByteWidth + 2;
    const std::uint32_t height = lines * (kLineHeight + kGap);
    return "<svg class=\"bytes\" role=\"img\" aria-label=\"" + HtmlText(label) + "\" width=\"" +
           Number(width) + "\" height=\"" + Number(height) + "\" viewBox=\"-1 -1 " + Number(width) + " " +
           Number(height) + "\">" + boxes_ + "</svg>";
  }

 private:
  void Box(const std::string& style, std::uint64_t x, std::uint64_t y, std::uint32_t width) {
    boxes_ += "<rect class=\"" + style + "\" x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" width=\"" +
              Number(width) + "\" height=\"" + Number(kLineHeight) + "\"/>";
  }

  void Words(std::uint64_t x, std::uint64_t y, std::uint32_t width, std::uint64_t position,
             const std::string& name) {
    constexpr std::uint32_t kFirstLine = 12;
    constexpr std::uint32_t kNextLine = 14;
    const std::uint32_t most = (width - 2 * kPadding) / kCharacterWidth;
    Word("place", x, y + kFirstLine, Number(position));
    std::uint64_t line = y + kFirstLine + kNextLine;
    for (const std::string& part : Wrapped(name, most)) {
      Word("name", x, line, part);
      line += kNextLine;
    }
  }

  void Word(const char* style, std::uint64_t x, std::uint64_t y, const std::string& text) {
    boxes_ += std::string("<text class=\"") + style + "\" x=\"" + Number(x) + "\" y=\"" + Number(y) + "\">" +
              HtmlText(text) + "</text>";
  }

  std::string boxes_;
  std::uint32_t used_ = 0;  // bytes drawn so far
};

std::string Bytes(std::uint64_t first, std::uint32_t length) {
  if (length == 1) return "byte " + Number(first);
  return "bytes " + Number(first) + " to " + Number(first + length - 1);
}

}  // namespace

std::string ByteDiagram(const Command& command, const std::vector<CommandField>& fields) {
  Diagram diagram;
  if (command.extended_code) {
    diagram.Add("code", 0, kExtendedCodeSize, "command", "the command's code, bytes 0 to 3");
  }
  bool is_even = false;
  for (const CommandField& field : fields) {
    const std::uint32_t length = field.length.value_or(kBytesALine);
    const std::string& name = field.var->var_name;
    const std::string extent = field.length ? Bytes(field.position, length) : "all bytes";
    const bool is_shortened = length > kLongestDrawn || !field.length;
    std::string words = name;
    if (is_shortened) words.append(" (").append(extent).append(")");
    std::string title = name;
    title.append(", ").append(field.var->var_type).append(", ").append(extent);
    diagram.Add(is_even ? "other" : "field", field.position, std::min(length, kLongestDrawn), words, title);
    is_even = !is_even;
  }
  return diagram.Svg("byte layout");
}

}  // namespace varkel
