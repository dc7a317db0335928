#include "bench/figure.h"

#include <algorithm>
#include <stdexcept>

namespace orvane::bench {

double quantile(std::vector<double> samples, double part) {
  const auto at = samples.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(samples.size() - 1) + 0.5);
  std::nth_element(samples.begin(), at, samples.end());
  return *at;
}

Result measure(const Figure& figure, size_t rounds) {
  const Sides sides = figure.prepare();
  std::vector<double> ours;
  std::vector<double> yardstick;
  std::vector<double> ratios;
  if (rounds > 1) {
    sides.ours();
    sides.yardstick();
  }
  for (size_t round = 0; round < rounds; ++round) {
    const bool first = round % 2 == 0;  // each side goes first half the time
    const double before = first ? sides.ours() : sides.yardstick();
    const double after = first ? sides.yardstick() : sides.ours();
    ours.push_back(first ? before : after);
    yardstick.push_back(first ? after : before);
    ratios.push_back(ours.back() / yardstick.back());
  }
  return {quantile(ours, 0.5), quantile(yardstick, 0.5), quantile(ratios, 0.25), quantile(ratios, 0.5),
          quantile(ratios, 0.75)};
}

bool holds(const Figure& figure, const Result& result) {
  return figure.bound == Bound::AtMost ? result.ratio <= figure.must : result.ratio >= figure.must;
}

void requireEqual(const std::string& ours, const std::string& yardstick) {
  if (ours != yardstick) {
    throw std::runtime_error("the two sides differ:\n" + ours.substr(0, 4000) + "\n" + yardstick.substr(0, 4000));
  }
}

}  // namespace orvane::bench
