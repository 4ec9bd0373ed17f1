#include "cli/table_commands.h"

#include <QString>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "VarkelCore/src/catalogue/model_names.h"
#include "VarkelCore/src/documents/dissector.h"
#include "VarkelCore/src/documents/lint_text.h"
#include "VarkelCore/src/documents/table_reference.h"
#include "VarkelCore/src/state/json_text.h"
#include "VarkelCore/src/state/sensor_link.h"
#include "VarkelCore/src/tasks/atomic_file.h"

namespace varkel::cli {

namespace {

/// Prints a result that is just a sentence.
ExitCode Say(const Arguments& arguments, Console& console, ExitCode exit, const std::string& text) {
  if (arguments.json) {
    const char* const key = exit == kDone ? "message" : "error";
    console.Result(JsonObject().Bool("ok", exit == kDone).Text(key, text).str());
  } else {
    exit == kDone ? console.Result(Plain(text)) : console.Note("varkelctl: " + Plain(text));
  }
  return exit;
}

std::string JsonFinding(const TableFinding& finding) {
  return JsonObject()
      .Number("line", static_cast<long long>(finding.line))
      .Text("column", finding.column)
      .Text("severity", finding.severity == Severity::kError ? "error" : "warning")
      .Text("text", finding.text)
      .str();
}

ExitCode Lint(const Arguments& arguments, const std::string& table_folder, Console& console) {
  const std::string path = TablePath(arguments.table, table_folder);
  const std::vector<TableFinding> findings = LintTable(path);
  if (arguments.json) {
    console.Result(JsonObject()
                       .Text("file", path)
                       .Bool("ok", findings.empty())
                       .Raw("findings", JsonList(findings, JsonFinding))
                       .str());
  } else {
    for (const TableFinding& finding : findings) {
      const Colour colour = finding.severity == Severity::kError ? Colour::kBad : Colour::kPlain;
      console.Result(console.Paint(Plain(FindingLine(finding)), colour));
    }
    console.Result(Plain(path + ": " + FindingCount(findings)));
  }
  if (HasErrors(findings)) return kFailed;
  return findings.empty() ? kDone : kDifferent;
}

ExitCode WriteDocument(const Arguments& arguments, Console& console, const std::string& document) {
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(document.data()), document.size());
  const QString path = QString::fromStdString(arguments.output);
  if (!IsWritableTarget(path) || WriteAtomically(path, bytes) != WriteResult::kWritten) {
    return Say(arguments, console, kFailed, "The file " + arguments.output + " can't be written.");
  }
  return Say(arguments, console, kDone, arguments.output + " has been written.");
}

ExitCode Reference(const Arguments& arguments, const std::string& table_folder, Console& console) {
  const auto write = ReferenceWriter(arguments.output);
  if (write == nullptr) {
    return Say(arguments, console, kWrongUse, "-o of table reference has to end in .html or .md.");
  }
  const auto model = LoadModel(table_folder, arguments.table);
  if (!model) return Say(arguments, console, kFailed, model.error());
  return WriteDocument(arguments, console, write(MakeReference((*model)->name, *(*model)->catalogue)));
}

ExitCode Dissector(const Arguments& arguments, const std::string& table_folder, Console& console) {
  const std::vector<std::string> names =
      arguments.table.empty() ? ListTables(table_folder) : std::vector<std::string>{arguments.table};
  std::vector<std::shared_ptr<Model>> loaded;
  std::vector<DissectorModel> models;
  for (const std::string& name : names) {
    const auto model = LoadModel(table_folder, name);
    if (!model) return Say(arguments, console, kFailed, model.error());
    loaded.push_back(*model);
    models.push_back({name, loaded.back()->catalogue.get()});
  }
  return WriteDocument(arguments, console, WiresharkDissector(models));
}

}  // namespace

bool IsTableCommand(const std::string& command) {
  return command.starts_with("table ");
}

ExitCode RunTableCommand(const Arguments& arguments, const std::string& table_folder, Console& console) {
  if (arguments.command == "table lint") return Lint(arguments, table_folder, console);
  if (arguments.command == "table reference") return Reference(arguments, table_folder, console);
  return Dissector(arguments, table_folder, console);
}

}  // namespace varkel::cli
