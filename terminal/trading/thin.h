#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace orvane::terminal {

// What a client may ask a curve to be thinned to.
constexpr size_t kMinPoints = 4;
constexpr size_t kMaxPoints = 2000;

// At most `limit` of the points, which have a member `time` and are in its order. The time from the first to the last
// is divided into equal intervals, and the first, last, lowest and highest point of each is kept. REQUIRES: limit >= 4.
template <typename Point, typename Value>
std::vector<Point> thin(const std::vector<Point>& points, size_t limit, const Value& value) {
  if (points.size() <= limit) return points;
  const auto count = static_cast<int64_t>(limit / 4);
  const int64_t start = points.front().time;
  const int64_t step = (points.back().time - start) / count + 1;
  const auto isLower = [&](const Point& a, const Point& b) { return value(a) < value(b); };
  std::vector<Point> kept;
  for (auto first = points.begin(); first != points.end();) {
    const int64_t end = start + ((first->time - start) / step + 1) * step;
    const auto next = std::find_if(first, points.end(), [&](const Point& it) { return it.time >= end; });
    const auto [lowest, highest] = std::minmax_element(first, next, isLower);
    auto last = points.end();
    for (const auto place : {first, std::min(lowest, highest), std::max(lowest, highest), next - 1}) {
      if (place != last) kept.push_back(*place);
      last = place;
    }
    first = next;
  }
  return kept;
}

}  // namespace orvane::terminal
