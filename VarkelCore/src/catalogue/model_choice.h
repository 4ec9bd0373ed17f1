#pragma once

#include <string>
#include <vector>

namespace varkel {

/// The models that the user may choose: all that have a table, or only the one that the program was started
/// for by a host program.
class ModelChoice {
 public:
  /// The names to choose from.
  std::vector<std::string> Models() const;
  /// Whether a host program may start the program for this model.
  bool MayBeHostModel(const std::string& name) const;

  void set_host_model(const std::string& name) { host_model_ = name; }
  /// Empty without a host program.
  const std::string& host_model() const { return host_model_; }

 private:
  std::string host_model_;
};

}  // namespace varkel
