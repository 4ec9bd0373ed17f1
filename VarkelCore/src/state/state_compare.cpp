#include "VarkelCore/src/state/state_compare.h"

#include <string_view>
#include <unordered_map>
#include <utility>

namespace varkel {

namespace {

void CompareValues(const StateValue& left, const StateValue& right, std::vector<Difference>& differences) {
  if (left.text != right.text) {
    differences.push_back({left.id, left.name, DifferenceKind::kChanged, left.text, right.text});
  } else if (!left.raw.empty() && !right.raw.empty() && left.raw != right.raw) {
    differences.push_back({left.id, left.name, DifferenceKind::kOtherBytes, left.raw, right.raw});
  }
}

}  // namespace

const char* DifferenceKindName(DifferenceKind kind) {
  switch (kind) {
    case DifferenceKind::kChanged:
      return "changed";
    case DifferenceKind::kOnlyLeft:
      return "only-left";
    case DifferenceKind::kOnlyRight:
      return "only-right";
    case DifferenceKind::kOtherBytes:
      return "other-bytes";
  }
  return "";
}

Comparison CompareStates(const SensorState& left, const SensorState& right, LiveValues live) {
  Comparison comparison;
  comparison.other_model = left.model != right.model;
  comparison.other_table = left.table != right.table;
  std::unordered_map<std::string_view, std::size_t> place_of;
  place_of.reserve(right.values.size());
  for (std::size_t i = 0; i < right.values.size(); ++i) place_of.emplace(right.values[i].id, i);
  std::vector<bool> met(right.values.size(), false);
  for (const StateValue& value : left.values) {
    const auto found = place_of.find(value.id);
    const StateValue* other = found == place_of.end() ? nullptr : &right.values[found->second];
    const bool is_same = other != nullptr && (!comparison.other_table || other->name == value.name);
    if (is_same) {
      met[found->second] = true;
      const bool is_ignored = live == LiveValues::kIgnored && value.live && other->live;
      if (!is_ignored) CompareValues(value, *other, comparison.differences);
    } else {
      comparison.differences.push_back({value.id, value.name, DifferenceKind::kOnlyLeft, value.text, {}});
    }
  }
  for (std::size_t i = 0; i < right.values.size(); ++i) {
    const StateValue& value = right.values[i];
    if (met[i]) continue;
    comparison.differences.push_back({value.id, value.name, DifferenceKind::kOnlyRight, {}, value.text});
  }
  return comparison;
}

}  // namespace varkel
