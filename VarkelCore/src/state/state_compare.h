#pragma once

#include <string>
#include <vector>

#include "VarkelCore/src/state/sensor_state.h"

namespace varkel {

enum class DifferenceKind {
  kChanged,    ///< different texts
  kOnlyLeft,   ///< the right state lacks the variable
  kOnlyRight,  ///< the left state lacks the variable
  kOtherBytes  ///< the same text, but different bytes: texts are rounded
};

/// "changed", "only-left", "only-right", "other-bytes".
const char* DifferenceKindName(DifferenceKind kind);

struct Difference {
  std::string id;
  std::string name;
  DifferenceKind kind = DifferenceKind::kChanged;
  std::string left;  ///< the text; for kOtherBytes the bytes
  std::string right;
};

struct Comparison {
  std::vector<Difference> differences;  ///< in the order of the left state, then those only in the right one
  bool other_model = false;
  /// The states come from different tables of a model. An identifier may then stand for another variable, so
  /// identifier and name must both match.
  bool other_table = false;

  bool is_equal() const { return differences.empty(); }
};

/// Whether variables that the sensor itself keeps changing are compared as well.
enum class LiveValues { kIgnored, kCompared };

/// Compares variable by variable, by identifier; by identifier and name when the tables differ. Bytes are
/// compared if both states have them.
Comparison CompareStates(const SensorState& left, const SensorState& right,
                         LiveValues live = LiveValues::kIgnored);

}  // namespace varkel
