#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "VarkelCore/src/catalogue/config_parser.h"
#include "VarkelCore/src/values/value_store.h"

namespace varkel {

/// A loaded sensor model: its table and its values. An operation keeps the model that it works on alive, even
/// if another one is selected meanwhile.
struct Model {
  Model(std::string model_name, std::shared_ptr<ConfigParser> table, ValueStore::Listener values_changed = {})
      : name(std::move(model_name)),
        catalogue(std::move(table)),
        values(catalogue, std::move(values_changed)) {}

  const std::string name;
  const std::shared_ptr<ConfigParser> catalogue;
  ValueStore values;
};

/// The findings of loading a table, as sentences for the log.
struct LoadReport {
  std::string table;  ///< "The model table of Quenta"
  std::string path;   ///< of the table's file
  /// Why the table could not be loaded: file, fault and, if known, the variable. Empty on success.
  std::string fault;
  std::vector<std::string> errors;
  std::vector<std::string> warnings;
};

/// The selected model. Thread-safe.
class ModelSelection {
 public:
  /// Sets the listener to the values of every model that is selected from now on; see ValueStore. Called
  /// before other threads use this object.
  void Listen(ValueStore::Listener values_changed) { values_changed_ = std::move(values_changed); }

  /// Loads the model's table and publishes it with fresh values; on failure, an empty catalogue.
  LoadReport Select(const std::string& model_name);

  /// Null until the first selection.
  std::shared_ptr<Model> model() const;
  std::shared_ptr<ConfigParser> catalogue() const;
  std::string model_name() const;

 private:
  ValueStore::Listener values_changed_;
  mutable std::mutex mutex_;
  std::shared_ptr<Model> model_;
};

}  // namespace varkel
