// From a received reply to the texts of the rows, compared with only converting the bytes to texts.
#include <benchmark/benchmark.h>

#include <QString>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "VarkelCore/src/pages/page_description.h"
#include "VarkelCore/src/pages/page_model.h"
#include "VarkelCore/src/pages/page_reader.h"
#include "VarkelCore/src/values/value_text.h"

namespace {

using varkel::ConfigParser;
using varkel::VarInfo;

constexpr std::size_t kFieldSize = 4;

struct NoReport : varkel::UserReport {
  void Log(const std::string& /*text*/, const std::string& /*type*/) override {}
  void Bytes(const std::string& /*line*/) override {}
  void Error(const std::string& /*text*/) override {}
  void Success(const std::string& /*text*/) override {}
};

/// A page of four-byte numbers that are all read by one command.
class Page {
 public:
  explicit Page(std::size_t variables) : reply_(variables * kFieldSize) {
    const auto path = std::filesystem::temp_directory_path() / "varkel-page-bench.csv";
    {
      std::ofstream table(path, std::ios::binary);
      table << "GroupID,Index,Get,Set,SetIndex,VarName,Permission,VarType,DefaultValue,Options,Unit,"
               "Coefficient,"
               "SetCoefficient,OptionDescription,FunctionModule,VarLen,TimerUpdate,GetCmdPayload\n"
               "0,Page,Group,,,,,,,,,,,,,,,\n";
      for (std::size_t i = 1; i <= variables; ++i) {
        table << "1," << i << ",0x05,,,Variable " << i << ",0,uint32,0,,mV,0.1,,,1_1_" << i << "_0,4,1,\n";
      }
    }
    const auto catalogue = std::make_shared<ConfigParser>(path.string());
    catalogue->ExtractConfigInfo();
    std::filesystem::remove(path);
    model_ = std::make_shared<varkel::Model>("bench", catalogue);
    group_ = varkel::GroupByGetCommand(varkel::ReadableVars(*catalogue, 0)).at(0).vars;
  }

  /// The next reply, with every value changed, or the first `changed` of them.
  void Move(std::size_t changed) {
    for (std::size_t i = 0; i < changed; ++i) ++reply_[i * kFieldSize + 3];
  }

  const std::shared_ptr<varkel::Model>& shared_model() const { return model_; }
  varkel::Model& model() const { return *model_; }
  const std::vector<VarInfo*>& group() const { return group_; }
  std::span<const std::uint8_t> reply() const { return reply_; }

 private:
  std::shared_ptr<varkel::Model> model_;
  std::vector<VarInfo*> group_;
  std::vector<std::uint8_t> reply_;
};

void BM_PageUpdate(benchmark::State& state) {
  Page page(static_cast<std::size_t>(state.range(0)));
  NoReport report;
  const varkel::PageReader reader({report, [] {}});
  for ([[maybe_unused]] auto _ : state) {
    page.Move(page.group().size());
    reader.StoreReply(page.model(), page.group(), page.reply(), page.model().values.Now());
    page.model().values.TakeChanges();
    for (const VarInfo* var : page.group()) {
      benchmark::DoNotOptimize(varkel::VariableMap(page.model(), *var));
    }
  }
}
BENCHMARK(BM_PageUpdate)->Arg(20)->Arg(200)->Arg(2000);

// The sensor reports one variable, and its row fetches all its roles again: the size of the table must not
// matter.
void BM_OneRowOfATable(benchmark::State& state) {
  const Page page(static_cast<std::size_t>(state.range(0)));
  varkel::PageModel rows(page.shared_model(), 0);
  const QList<int> roles = rows.roleNames().keys();
  QObject::connect(&rows, &QAbstractItemModel::dataChanged, [&](const auto& first, const auto& /*last*/) {
    for (const int role : roles) benchmark::DoNotOptimize(rows.data(first, role));
  });
  varkel::ValueStore& values = page.model().values;
  for (std::uint8_t value = 0; [[maybe_unused]] auto _ : state) {
    ++value;
    values.Read({{page.group().back(), std::to_string(value), {value}}}, values.Now());
    rows.ShowChanges(values.TakeChanges());
  }
}
BENCHMARK(BM_OneRowOfATable)->Arg(20)->Arg(10000);

void BM_Conversions(benchmark::State& state) {
  Page page(static_cast<std::size_t>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    page.Move(page.group().size());
    std::size_t position = 0;
    for (const VarInfo* var : page.group()) {
      const auto field = page.reply().subspan(position, kFieldSize);
      const varkel::ValueText value = varkel::BytesToText(var->var_type, field, var->coefficient);
      benchmark::DoNotOptimize(QString::fromStdString(value.text));
      position += kFieldSize;
    }
  }
}
BENCHMARK(BM_Conversions)->Arg(20)->Arg(200)->Arg(2000);

}  // namespace

BENCHMARK_MAIN();
