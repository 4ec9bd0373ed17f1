#pragma once

#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/documents/command_list.h"

namespace varkel {

/// A variable's entry in the reference.
struct ReferenceRow {
  const VarInfo* var = nullptr;
  std::string unit;                 ///< without the parentheses
  std::string type;                 ///< with the length if the type does not imply it
  std::vector<std::string> values;  ///< "1 to 100", or "0 Off" and "1 On"; empty: any
  std::string scale;                ///< shown value per raw unit; empty: 1
  bool is_action = false;
};

struct ReferenceGroup {
  std::string title;
  std::vector<ReferenceRow> rows;
};

struct ReferencePage {
  std::string title;
  std::vector<ReferenceGroup> groups;  ///< only those that have rows
};

/// A model's table in reading order: pages, variables that are on no page, commands. The records belong to
/// the catalogue, which outlives this object.
struct TableReference {
  std::string model;
  std::vector<ReferencePage> pages;  ///< only those that have rows; the last one may be "On no page"
  std::vector<WireCommand> commands;
  std::size_t variables = 0;
};

TableReference MakeReference(const std::string& model, const ConfigParser& catalogue);

/// "0x05", or "0x01000101" for a four-byte code.
std::string CommandText(const Command& command);

/// The command that a cell's text names; null if the text is empty or not a number.
const WireCommand* FindCommand(const TableReference& reference, const std::string& text);

/// One self-contained HTML file, for the screen (with a full-text search) and for printing.
std::string HtmlReference(const TableReference& reference);

/// The same as Markdown, without diagrams, for repositories and wikis.
std::string MarkdownReference(const TableReference& reference);

/// Chooses between the two by a file name's extension; null for any other extension.
using ReferenceFunction = std::string (*)(const TableReference& reference);
ReferenceFunction ReferenceWriter(const std::string& file_name);

}  // namespace varkel
