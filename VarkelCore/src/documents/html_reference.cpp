#include <string_view>

#include "VarkelCore/src/documents/byte_diagram.h"
#include "VarkelCore/src/documents/markup.h"
#include "VarkelCore/src/documents/table_reference.h"
#include "embedded/texts.h"

namespace varkel {
namespace {

/// An element with escaped text.
std::string Element(const std::string& opening, const std::string& text) {
  return "<" + opening + ">" + HtmlText(text) + "</" + opening.substr(0, opening.find(' ')) + ">";
}

std::string PageAnchor(std::size_t page) {
  return "page-" + std::to_string(page + 1);
}

/// Writes the page, part by part.
class HtmlWriter {
 public:
  explicit HtmlWriter(const TableReference& reference) : reference_(reference) {}

  std::string Write() {
    const std::string title = reference_.model + " reference";
    html_ =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n" +
        Element("title", title) + "\n<style>\n" + std::string(embedded::kReferenceStyle) +
        "</style>\n</head>\n<body>\n<header>\n" + Element("h1", title) + "\n<p class=\"count\">" +
        Counted(reference_.variables, "variable") + ", " + Counted(reference_.commands.size(), "command") +
        "</p>\n<input id=\"search\" type=\"search\" placeholder=\"Search names, identifiers, "
        "commands, values\" aria-label=\"Search\" autofocus>\n<output id=\"found\"></output>\n</header>\n";
    Contents();
    html_ += "<main>\n";
    for (std::size_t i = 0; i < reference_.pages.size(); ++i) Page(i);
    Commands();
    html_ += "<p id=\"nothing\" hidden>Nothing matches the search.</p>\n</main>\n<script>\n" +
             std::string(embedded::kReferenceScript) + "</script>\n</body>\n</html>\n";
    return std::move(html_);
  }

 private:
  void Contents() {
    html_ += "<nav aria-label=\"Contents\">\n";
    for (std::size_t i = 0; i < reference_.pages.size(); ++i) {
      html_ += Element("a href=\"#" + PageAnchor(i) + "\"", reference_.pages[i].title) + "\n";
    }
    html_ += "<a href=\"#commands\">Commands</a>\n</nav>\n";
  }

  void Page(std::size_t index) {
    const ReferencePage& page = reference_.pages[index];
    html_ += "<section id=\"" + PageAnchor(index) + "\">\n" + Element("h2", page.title) + "\n";
    for (const ReferenceGroup& group : page.groups) Group(group);
    html_ += "</section>\n";
  }

  void Group(const ReferenceGroup& group) {
    html_ +=
        "<div class=\"group\">\n" + Element("h3", group.title) +
        "\n<table>\n<thead><tr><th class=\"id\">ID</th><th class=\"name\">Name</th>"
        "<th class=\"type\">Type</th><th class=\"values\">Values</th><th class=\"unit\">Unit</th>"
        "<th class=\"default\">Default</th><th class=\"command\">Read</th><th class=\"command\">Write</th>"
        "</tr></thead>\n<tbody>\n";
    for (const ReferenceRow& row : group.rows) Row(row);
    html_ += "</tbody>\n</table>\n</div>\n";
  }

  void Row(const ReferenceRow& row) {
    const VarInfo& var = *row.var;
    std::string name = HtmlText(var.var_name);
    if (var.timer_update) name += " <span class=\"mark\">live</span>";
    if (var.permission != 0 && !var.set_cmd.empty() && !row.is_action) {
      name += " <span class=\"mark edit\">editable</span>";
    }
    std::string type = HtmlText(row.type);
    if (!row.scale.empty()) type += "<small>&times; " + HtmlText(row.scale) + "</small>";
    html_ += "<tr class=\"item\">" + Element("td class=\"id\"", var.var_id) + "<td class=\"name\">" + name +
             "</td><td class=\"type\">" + type + "</td>" + "<td class=\"values\">" + Values(row) + "</td>" +
             Element("td class=\"unit\"", row.unit) + Element("td class=\"default\"", var.default_val) +
             "<td class=\"command\">" + CommandLink(var.get_cmd) + "</td><td class=\"command\">" +
             CommandLink(var.set_cmd) + "</td></tr>\n";
  }

  static std::string Values(const ReferenceRow& row) {
    std::string html;
    for (const std::string& value : row.values) {
      html += (html.empty() ? "" : ", ") + Element("span class=\"option\"", value);
    }
    return html;
  }

  std::string CommandLink(const std::string& text) const {
    const WireCommand* const command = FindCommand(reference_, text);
    if (command == nullptr) return HtmlText(text);
    return Element("a href=\"#command-" + command->key + "\"", CommandText(command->command));
  }

  void Commands() {
    html_ +=
        "<section id=\"commands\">\n<h2>Commands</h2>\n<p class=\"hint\">A box is a field, the number in it "
        "its "
        "first byte in the payload. Numbers are big-endian.</p>\n";
    for (const WireCommand& command : reference_.commands) OneCommand(command);
    html_ += "</section>\n";
  }

  void OneCommand(const WireCommand& command) {
    html_ += "<div class=\"wire item\" id=\"command-" + command.key + "\">\n<h3><code>" +
             CommandText(command.command) + "</code> " + HtmlText(command.Name()) + "</h3>\n";
    const std::string& asked = AskedPayload(command);
    if (!asked.empty()) html_ += "<p>Asked with the payload <code>0x" + HtmlText(asked) + "</code>.</p>\n";
    if (command.is_upgrade) html_ += "<p>Takes a firmware package, piece by piece.</p>\n";
    Layout("Reply", command, command.read);
    Layout("Write request", command, command.written);
    if (command.has_angles) {
      html_ +=
          "<p>Angles follow, two bytes each, in tenths of a degree: five start angles in a request; pairs of "
          "start and end in a reply, as many as the first byte says.</p>\n";
    }
    if (command.read.empty() && command.written.empty() && !command.is_upgrade) {
      html_ += "<p>The table names no fields.</p>\n";
    }
    // Makes the words that the diagram shortens searchable.
    html_ += "<p class=\"words\" hidden>";
    for (const VarInfo* var : command.vars) html_ += HtmlText(var->var_name + " " + var->var_id) + " ";
    html_ += "</p>\n</div>\n";
  }

  static std::string AskedPayload(const WireCommand& command) {
    return command.read.empty() ? std::string() : command.read.front().var->get_cmd_payload;
  }

  void Layout(const char* what, const WireCommand& command, const std::vector<CommandField>& fields) {
    if (fields.empty()) return;
    html_ += std::string("<figure><figcaption>") + what;
    if (const auto size = PayloadSize(fields); size && !command.has_angles) {
      html_ += ", " + Counted(*size, "byte");
    }
    html_ += "</figcaption>" + ByteDiagram(command.command, fields) + "</figure>\n";
  }

  const TableReference& reference_;
  std::string html_;
};

}  // namespace

std::string HtmlReference(const TableReference& reference) {
  return HtmlWriter(reference).Write();
}

}  // namespace varkel
