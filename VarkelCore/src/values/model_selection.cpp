#include "VarkelCore/src/values/model_selection.h"

#include <exception>
#include <utility>

#include "VarkelCore/src/catalogue/model_names.h"

namespace varkel {

std::string ModelSelection::Select(const std::string& model_name) {
  const std::string path = std::string(kTableFolder) + "/" + model_name + ".csv";
  auto loaded = std::make_shared<ConfigParser>(path);
  std::string fault;
  try {
    if (!loaded->ExtractConfigInfo()) fault = "the file can't be opened";
  } catch (const std::exception& error) {
    fault = error.what();
    const std::string row = loaded->RowBeingRead();
    if (!row.empty()) fault += " (" + row + ")";
  }
  if (!fault.empty()) {
    loaded = std::make_shared<ConfigParser>(std::string());
    fault = "Can't load the model table " + path + ": " + fault;
  }
  auto model = std::make_shared<Model>(model_name, std::move(loaded), values_changed_);
  const std::lock_guard lock(mutex_);
  model_ = std::move(model);
  return fault;
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
