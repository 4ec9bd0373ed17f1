#pragma once

#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/documents/command_list.h"

namespace varkel {

/// A variable as people look it up.
struct ReferenceRow {
  const VarInfo* var = nullptr;
  std::string unit;                 ///< without the brackets of the pages
  std::string type;                 ///< with its length where the type does not tell it
  std::vector<std::string> values;  ///< "1 to 100", or "0 Off" and "1 On"; empty: any
  std::string scale;                ///< of the bytes on the wire; empty: 1
  bool is_action = false;
};

struct ReferenceGroup {
  std::string title;
  std::vector<ReferenceRow> rows;
};

struct ReferencePage {
  std::string title;
  std::vector<ReferenceGroup> groups;  ///< those that have rows
};

/// A model's table in the order in which people read it: pages, what is on no page, commands. The records
/// belong to the catalogue, which lives at least as long.
struct TableReference {
  std::string model;
  std::vector<ReferencePage> pages;  ///< those that show something; the last one may be "On no page"
  std::vector<WireCommand> commands;
  std::size_t variables = 0;
};

TableReference MakeReference(const std::string& model, const ConfigParser& catalogue);

/// "0x05", or "0x01000101" for a four-byte code.
std::string CommandText(const Command& command);

/// The wire command of a cell's text; null for a text that is no number, or an empty one.
const WireCommand* FindCommand(const TableReference& reference, const std::string& text);

/// One self-contained HTML file, for the screen (with a search over everything) and for paper.
std::string HtmlReference(const TableReference& reference);

/// The same without pictures, for repositories and wikis.
std::string MarkdownReference(const TableReference& reference);

/// The one of the two that a file's name asks for by its ending; null for any other ending.
using ReferenceFunction = std::string (*)(const TableReference& reference);
ReferenceFunction ReferenceWriter(const std::string& file_name);

}  // namespace varkel
