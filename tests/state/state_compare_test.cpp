#include "VarkelCore/src/state/state_compare.h"

#include <gtest/gtest.h>

namespace varkel {
namespace {

SensorState StateOf(const std::string& table, std::vector<StateValue> values) {
  SensorState state;
  state.table = table;
  state.values = std::move(values);
  return state;
}

StateValue Value(const char* id, const char* name, const char* text, const char* raw = "") {
  return {id, name, {}, {}, {}, text, raw};
}

std::string Compared(const SensorState& left, const SensorState& right) {
  std::string text;
  for (const Difference& difference : CompareStates(left, right).differences) {
    text += difference.id + " " + DifferenceKindName(difference.kind) + " " + difference.left + "|" +
            difference.right + "; ";
  }
  return text;
}

TEST(StateCompare, NamesEveryDifference) {
  const SensorState left = StateOf("t", {Value("1-1", "A", "5", "05"), Value("1-2", "B", "0.12", "3d fc"),
                                         Value("1-3", "C", "x"), Value("1-4", "D", "7", "07")});
  const SensorState right = StateOf("t", {Value("1-4", "D", "7"), Value("1-2", "B", "0.12", "3d fd"),
                                          Value("1-1", "A", "6", "06"), Value("2-1", "E", "y")});
  EXPECT_EQ(Compared(left, right),
            "1-1 changed 5|6; 1-2 other-bytes 3d fc|3d fd; 1-3 only-left x|; 2-1 only-right |y; ");
  EXPECT_EQ(Compared(left, left), "");
}

TEST(StateCompare, AnIdentifierOfAnotherTableCountsWithItsName) {
  const SensorState left = StateOf("old", {Value("1-1", "A", "5"), Value("1-2", "B", "6")});
  const SensorState right = StateOf("new", {Value("1-1", "Other", "5"), Value("1-2", "B", "6")});
  EXPECT_EQ(Compared(left, right), "1-1 only-left 5|; 1-1 only-right |5; ");
  EXPECT_TRUE(CompareStates(left, right).other_table);
}

}  // namespace
}  // namespace varkel
