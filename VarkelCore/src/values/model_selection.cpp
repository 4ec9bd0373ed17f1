#include "VarkelCore/src/values/model_selection.h"

#include <exception>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"

namespace varkel {

namespace {

/// Why the table can't be loaded; empty on success.
std::string Load(ConfigParser& catalogue) {
  try {
    if (catalogue.ExtractConfigInfo()) return {};
    return "the file can't be opened";
  } catch (const std::exception& error) {
    const std::string row = catalogue.RowBeingRead();
    return error.what() + (row.empty() ? std::string() : " (" + row + ")");
  }
}

void AddFindings(const ConfigParser& catalogue, LoadReport& report) {
  for (const std::string& warning : catalogue.load_warnings()) {
    report.warnings.push_back(std::string(report.table).append(": ").append(warning));
  }
  for (const VarInfo* var : catalogue.VarsWithoutSwitch()) report.errors.push_back(MissingSwitchText(*var));
}

}  // namespace

LoadReport ModelSelection::Select(const std::string& model_name) {
  LoadReport report;
  report.table = "The model table of " + model_name;
  report.path = std::string(kTableFolder) + "/" + model_name + ".csv";
  auto loaded = std::make_shared<ConfigParser>(report.path);
  if (const std::string fault = Load(*loaded); fault.empty()) {
    AddFindings(*loaded, report);
  } else {
    loaded = std::make_shared<ConfigParser>(std::string());
    report.fault = "Can't load the model table " + report.path + ": " + fault;
    report.errors.push_back(report.fault);
  }
  auto model = std::make_shared<Model>(model_name, std::move(loaded), values_changed_);
  const std::lock_guard lock(mutex_);
  model_ = std::move(model);
  return report;
}

std::shared_ptr<Model> ModelSelection::model() const {
  const std::lock_guard lock(mutex_);
  return model_;
}

std::shared_ptr<ConfigParser> ModelSelection::catalogue() const {
  const auto selected = model();
  return selected ? selected->catalogue : nullptr;
}

std::string ModelSelection::model_name() const {
  const auto selected = model();
  return selected ? selected->name : std::string();
}

}  // namespace varkel
