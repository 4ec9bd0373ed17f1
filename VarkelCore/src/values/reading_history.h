#pragma once

#include <cstddef>
#include <deque>
#include <map>

#include "VarkelCore/src/values/value_store.h"

namespace varkel {

/// The numbers that live variables had since they came up. What is oldest goes when there is too much: each
/// variable keeps so many points, and so many variables have any. Not thread-safe.
class ReadingHistory {
 public:
  static constexpr std::size_t kMostPoints = 18000;  ///< half an hour of ten readings a second
  static constexpr std::size_t kMostVariables = 64;

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

  /// What a row shows after an event. Only a new reading of a live variable that is a number counts.
  /// True when it was added.
  bool Add(const VarInfo& var, const ValueStore::Shown& shown);
  void Clear() { points_.clear(); }

  /// In the order of time; null before the first.
  const Points* Find(const VarInfo& var) const;
  /// `points` is not empty.
  static Summary Summarize(const Points& points);

 private:
  void MakeRoom();

  std::map<const VarInfo*, Points> points_;
};

}  // namespace varkel
