#include "VarkelCore/src/values/reading_history.h"

#include <gtest/gtest.h>

namespace varkel {
namespace {

using std::chrono::milliseconds;

VarInfo LiveVariable() {
  VarInfo var;
  var.timer_update = true;
  return var;
}

ValueStore::Shown ReadAt(int ms, const std::string& text) {
  ValueStore::Shown shown;
  shown.text = text;
  shown.origin = ValueOrigin::kRead;
  shown.read_time = ValueStore::Time(milliseconds(ms));
  return shown;
}

TEST(ReadingHistoryTest, KeepsNewNumbersOfLiveVariables) {
  ReadingHistory history;
  const VarInfo live = LiveVariable();
  const VarInfo still;
  auto edited = ReadAt(9, "4");
  edited.edited = true;
  auto stale = ReadAt(9, "4");
  stale.stale = true;
  const struct {
    const VarInfo& var;
    ValueStore::Shown shown;
    bool added;
  } kEvents[] = {
      {live, ReadAt(1, "-1.50"), true},
      {live, ReadAt(2, "4"), true},
      {live, ReadAt(2, "5"), false},
      {still, ReadAt(3, "5"), false},
      {live, ReadAt(4, "4 s"), false},
      {live, ReadAt(4, ""), false},
      {live, ReadAt(4, "nan"), false},
      {live, edited, false},
      {live, stale, false},
      {live, {}, false},
      {live, ReadAt(10, "0.5"), true},
  };
  for (const auto& [var, shown, added] : kEvents) EXPECT_EQ(history.Add(var, shown), added) << shown.text;
  ASSERT_NE(history.Find(live), nullptr);
  EXPECT_EQ(history.Find(still), nullptr);
  const auto [min, max, mean] = ReadingHistory::Summarize(*history.Find(live));
  EXPECT_EQ(min, -1.5);
  EXPECT_EQ(max, 4);
  EXPECT_EQ(mean, 1);
}

TEST(ReadingHistoryTest, IsBounded) {
  ReadingHistory history;
  std::vector<VarInfo> vars(ReadingHistory::kMaxVariables + 1, LiveVariable());
  for (std::size_t i = 0; i < ReadingHistory::kMaxPoints + 5; ++i) {
    history.Add(vars[0], ReadAt(static_cast<int>(i) + 1, "1"));
  }
  EXPECT_EQ(history.Find(vars[0])->size(), ReadingHistory::kMaxPoints);
  EXPECT_EQ(history.Find(vars[0])->front().time, ValueStore::Time(milliseconds(6)));
  for (std::size_t i = 1; i < vars.size(); ++i) history.Add(vars[i], ReadAt(static_cast<int>(i), "1"));
  EXPECT_EQ(history.Find(vars[1]), nullptr);  // the one that has not been read for longest
  EXPECT_NE(history.Find(vars.back()), nullptr);
}

}  // namespace
}  // namespace varkel
