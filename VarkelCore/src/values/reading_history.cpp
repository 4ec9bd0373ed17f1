#include "VarkelCore/src/values/reading_history.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace varkel {

namespace {

std::optional<double> WholeNumber(const std::string& text) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, fault] = std::from_chars(text.data(), end, number);
  if (fault != std::errc{} || stop != end || !std::isfinite(number)) return std::nullopt;
  return number;
}

}  // namespace

bool ReadingHistory::Add(const VarInfo& var, const ValueStore::Shown& shown) {
  if (!var.timer_update || shown.edited || shown.stale || !shown.read_time) return false;
  const auto number = WholeNumber(shown.text);
  if (!number) return false;
  if (points_.count(&var) == 0) MakeRoom();
  Points& points = points_[&var];
  if (!points.empty() && points.back().time >= *shown.read_time) return false;
  points.push_back({*shown.read_time, *number});
  if (points.size() > kMaxPoints) points.pop_front();
  return true;
}

void ReadingHistory::MakeRoom() {
  if (points_.size() < kMaxVariables) return;
  points_.erase(std::min_element(points_.begin(), points_.end(), [](const auto& a, const auto& b) {
    return a.second.back().time < b.second.back().time;
  }));
}

const ReadingHistory::Points* ReadingHistory::Find(const VarInfo& var) const {
  const auto found = points_.find(&var);
  return found == points_.end() ? nullptr : &found->second;
}

ReadingHistory::Summary ReadingHistory::Summarize(const Points& points) {
  Summary summary{points.front().value, points.front().value, 0};
  double sum = 0;
  for (const Point& point : points) {
    summary.min = std::min(summary.min, point.value);
    summary.max = std::max(summary.max, point.value);
    sum += point.value;
  }
  summary.mean = sum / static_cast<double>(points.size());
  return summary;
}

}  // namespace varkel
