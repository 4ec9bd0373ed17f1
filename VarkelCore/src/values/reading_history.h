#pragma once

#include <cstddef>
#include <deque>
#include <map>

#include "VarkelCore/src/values/value_store.h"

namespace varkel {

/// The readings of numeric live variables over time. The number of points per variable and the number of
/// variables are limited; the oldest are dropped. Not thread-safe.
class ReadingHistory {
 public:
  static constexpr std::size_t kMaxPoints = 18000;  ///< half an hour at ten readings a second
  static constexpr std::size_t kMaxVariables = 64;

  struct Point {
    ValueStore::Time time;
    double value = 0;
  };
  using Points = std::deque<Point>;

  struct Summary {
    double min = 0;
    double max = 0;
    double mean = 0;
  };

  /// Adds what a row shows after an event, if it is a new reading of a numeric live variable; true if it was
  /// added.
  bool Add(const VarInfo& var, const ValueStore::Shown& shown);
  void Clear() { points_.clear(); }

  /// In chronological order; null before the first.
  const Points* Find(const VarInfo& var) const;
  /// `points` is not empty.
  static Summary Summarize(const Points& points);

 private:
  void MakeRoom();

  std::map<const VarInfo*, Points> points_;
};

}  // namespace varkel
