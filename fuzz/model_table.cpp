// A model table: from the file to the page description, then read from and saved to a sensor that answers
// with arbitrary bytes.
//
// Input: the table. If it begins with a digit, the usual header row is put before it.
#include <sys/mman.h>
#include <unistd.h>

#include <QtGlobal>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "VarkelCore/src/catalogue/table_lint.h"
#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/pages/page_writer.h"
#include "VarkelCore/src/pages/value_editor.h"
#include "VarkelCore/src/values/range_check.h"
#include "fuzz/input.h"
#include "fuzz/scripted_transport.h"
#include "tests/support/recorded_report.h"

namespace {

using fuzz::Bytes;
using fuzz::Require;
using fuzz::Vector;
using varkel::ConfigParser;
using varkel::VarInfo;

constexpr std::string_view kHeader =
    "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,Coefficient,"
    "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n";

void CheckCatalogue(ConfigParser& catalogue) {
  for (const auto& [var_id, var] : catalogue.var_map()) {
    Require(catalogue.FindById(var_id) == var.get() && catalogue.FindByName(var->var_name) != nullptr,
            "records are found");
    Require(var->switch_var == nullptr || catalogue.FindById(var->switch_var->var_id) == var->switch_var,
            "a switch is a record");
    std::pair<std::uint32_t, std::uint32_t> field;
    const std::string& cmd = var->get_cmd.empty() ? var->set_cmd : var->get_cmd;
    Require(catalogue.GetVarPosOffset(cmd, var_id, 3, field), "a record has a field");
  }
}

void Describe(const varkel::Model& model) {
  const ConfigParser& catalogue = *model.catalogue;
  PageTitles(catalogue);
  const QVariantList pages = PageRows(catalogue);
  for (const QVariant& page : pages) {
    for (const QVariant& entry : page.toList()) {
      const QVariantList row = entry.toList();
      const VarInfo* var = VariableAt(catalogue, row[2].toInt(), row[3].toInt(), row[4].toInt());
      Require((row[4].toInt() < 0) == (var == nullptr), "a row leads to its variable");
      if (var == nullptr) continue;
      const QVariantMap map = VariableMap(model, *var);
      Require(map["options"].toList().size() == map["varname_value_to_option"].toList().size(),
              "each option has its label");
      JudgeValue(catalogue, *var);
      JudgePageValue(catalogue, *var);
    }
  }
  Require(VariableMaps(model).size() == pages.size(), "each page has its variables");
  DownloadableLogs(catalogue);
}

void ReadAndSave(varkel::Model& model, Bytes answer) {
  fuzz::AnswerWith([answer](Bytes request) {
    Vector reply;
    quarn::lidar::KtcParser(1).KtcStreamEncode(Vector(answer.begin(), answer.end()), reply, request[2]);
    return reply;
  });
  quarn::lidar::KtcClient& client = *fuzz::OpenClient(1);
  varkel::test::RecordedReport report;
  const ConfigParser& catalogue = *model.catalogue;
  const varkel::PageReader reader({report, [] {}});
  const varkel::PageWriter writer({reader, report});
  const varkel::ValueEditor editor(report);
  const int pages = static_cast<int>(catalogue.module_vars().size());
  for (int page = 0; page < pages; ++page) {
    const auto groups = GroupByGetCommand(ReadableVars(catalogue, page));
    reader.ReadGroups(model, client, groups, "fuzz", [](bool) { return true; });
    const auto& module = catalogue.module_vars()[static_cast<std::size_t>(page)];
    for (int group = 0; std::cmp_less(group, module.size()); ++group) {
      const int count = static_cast<int>(module[static_cast<std::size_t>(group)].size());
      for (int index = 0; index < count; ++index) {
        const VarInfo* var = VariableAt(catalogue, page, group, index);
        editor.SetText(model, varkel::ValueEditor::kValue, page, group, index, var->default_val + "0");
        editor.SetText(model, varkel::ValueEditor::kSwitchValue, page, group, index, "1");
        editor.SetText(model, varkel::ValueEditor::kOptionIndex, page, group, index, "1");
      }
    }
  }
  Describe(model);
  for (int page = 0; page < pages; ++page) writer.Run(model, client, page);
  fuzz::Script() = {};
}

// The table is passed in a memory file.
void Load(const std::string& table, Bytes answer) {
  static const int file = memfd_create("table", 0);
  Require(
      ftruncate(file, 0) == 0 && std::cmp_equal(pwrite(file, table.data(), table.size(), 0), table.size()),
      "the memory file takes the table");
  const auto catalogue = std::make_shared<ConfigParser>("/proc/self/fd/" + std::to_string(file));
  const auto findings = varkel::LintTable(catalogue->path());
  try {
    Require(catalogue->ExtractConfigInfo(), "the file is open");
  } catch (const std::exception&) {
    catalogue->RowBeingRead();
    Require(!findings.empty(), "a table that does not load has a fault");
    return;
  }
  CheckCatalogue(*catalogue);
  varkel::Model model("fuzz", catalogue);
  ReadAndSave(model, answer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  std::string table(reinterpret_cast<const char*>(data), size);
  if (!table.empty() && table.front() >= '0' && table.front() <= '9') table.insert(0, kHeader);
  Load(table, Bytes(data, size % 256));
  return 0;
}
