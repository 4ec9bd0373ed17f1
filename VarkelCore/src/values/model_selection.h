#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/values/value_store.h"

namespace varkel {

/// A loaded sensor model: its table and its values. The operation that works on one keeps it alive, also when
/// another model is selected meanwhile.
struct Model {
  Model(std::string model_name, std::shared_ptr<ConfigParser> table, ValueStore::Listener values_changed = {})
      : name(std::move(model_name)),
        catalogue(std::move(table)),
        values(catalogue, std::move(values_changed)) {}

  const std::string name;
  const std::shared_ptr<ConfigParser> catalogue;
  ValueStore values;
};

/// What loading a table revealed, as sentences for the log.
struct LoadReport {
  std::string
      fault;  ///< why there is no table: file, fault and, where there is one, the variable; else empty
  std::vector<std::string> errors;
  std::vector<std::string> warnings;
};

/// The selected model. Thread-safe.
class ModelSelection {
 public:
  /// `values_changed` listens to the values of every model that is selected; see ValueStore.
  explicit ModelSelection(ValueStore::Listener values_changed = {})
      : values_changed_(std::move(values_changed)) {}

  /// Loads the model's table and publishes it with fresh values; an empty catalogue when that fails.
  LoadReport Select(const std::string& model_name);

  /// Null until the first selection.
  std::shared_ptr<Model> model() const;
  std::shared_ptr<ConfigParser> catalogue() const;
  std::string model_name() const;

 private:
  const ValueStore::Listener values_changed_;
  mutable std::mutex mutex_;
  std::shared_ptr<Model> model_;
};

}  // namespace varkel
