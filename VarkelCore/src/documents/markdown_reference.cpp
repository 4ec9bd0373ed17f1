#include "VarkelCore/src/documents/markup.h"
#include "VarkelCore/src/documents/table_reference.h"

namespace varkel {
namespace {

std::string Line(std::initializer_list<std::string> cells) {
  std::string line = "|";
  for (const std::string& cell : cells) line += " " + cell + " |";
  return line + "\n";
}

std::string Joined(const std::vector<std::string>& values) {
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : ", ") + MarkdownText(value);
  return text;
}

std::string CommandCell(const TableReference& reference, const std::string& text) {
  const WireCommand* const command = FindCommand(reference, text);
  return command == nullptr ? MarkdownText(text) : CommandText(command->command);
}

std::string Group(const TableReference& reference, const ReferenceGroup& group) {
  std::string text = "\n### " + MarkdownText(group.title) + "\n\n" +
                     Line({"ID", "Name", "Type", "Values", "Unit", "Default", "Read", "Write"}) +
                     "|---|---|---|---|---|---|---|---|\n";
  for (const ReferenceRow& row : group.rows) {
    const VarInfo& var = *row.var;
    const std::string scale = row.scale.empty() ? std::string() : " × " + row.scale;
    text += Line({MarkdownText(var.var_id), MarkdownText(var.var_name), MarkdownText(row.type + scale),
                  Joined(row.values), MarkdownText(row.unit), MarkdownText(var.default_val),
                  CommandCell(reference, var.get_cmd), CommandCell(reference, var.set_cmd)});
  }
  return text;
}

std::string Layout(const std::string& what, const WireCommand& command,
                   const std::vector<CommandField>& fields) {
  if (fields.empty()) return {};
  std::string text =
      "\n" + what + ":\n\n" + Line({"Offset", "Size", "Field", "Type"}) + "|---|---|---|---|\n";
  if (command.command.extended_code) {
    text += Line({"0", std::to_string(kExtendedCodeSize), "the code", "uint32"});
  }
  for (const CommandField& field : fields) {
    text += Line({std::to_string(field.position), field.length ? std::to_string(*field.length) : "all",
                  MarkdownText(field.var->var_name), MarkdownText(field.var->var_type)});
  }
  return text;
}

}  // namespace

std::string MarkdownReference(const TableReference& reference) {
  std::string text = "# " + MarkdownText(reference.model) + " reference\n";
  for (const ReferencePage& page : reference.pages) {
    text += "\n## " + MarkdownText(page.title) + "\n";
    for (const ReferenceGroup& group : page.groups) text += Group(reference, group);
  }
  text += "\n## Commands\n\nOffsets and sizes are bytes of the payload; numbers are big-endian.\n";
  for (const WireCommand& command : reference.commands) {
    text += "\n### " + CommandText(command.command) + " " + MarkdownText(command.Name()) + "\n";
    text += Layout("Reply", command, command.read) + Layout("Write request", command, command.written);
  }
  return text;
}

}  // namespace varkel
