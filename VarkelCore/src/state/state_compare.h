#pragma once

#include <string>
#include <vector>

#include "VarkelCore/src/state/sensor_state.h"

namespace varkel {

enum class DifferenceKind {
  kChanged,    ///< another text
  kOnlyLeft,   ///< the right state lacks the variable
  kOnlyRight,  ///< the left one does
  kOtherBytes  ///< the same text, made from other bytes: texts are rounded
};

/// "changed", "only-left", "only-right", "other-bytes".
const char* DifferenceKindName(DifferenceKind kind);

struct Difference {
  std::string id;
  std::string name;
  DifferenceKind kind = DifferenceKind::kChanged;
  std::string left;  ///< text; for other bytes the bytes
  std::string right;
};

struct Comparison {
  std::vector<Difference> differences;  ///< in the order of the left state, then what only the right one has
  bool other_model = false;
  /// The states come from different tables of a model: an identifier may have moved, so it counts only
  /// together with its name.
  bool other_table = false;

  bool is_equal() const { return differences.empty(); }
};

/// Whether variables that the sensor itself keeps changing are compared as well.
enum class LiveValues { kIgnored, kCompared };

/// Compares variable by variable, by identifier; by identifier and name when the tables differ. Bytes are
/// compared where both states have some.
Comparison CompareStates(const SensorState& left, const SensorState& right,
                         LiveValues live = LiveValues::kIgnored);

}  // namespace varkel
