#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace orvane::bench {

enum class Bound { AtMost, AtLeast };

// The two sides of a figure. Each call runs one slice of a few milliseconds and returns what it measured, in the
// figure's unit.
struct Sides {
  std::function<double()> ours;
  std::function<double()> yardstick;
};

// One ratio, ours to the yardstick's, and what must hold of it.
struct Figure {
  std::string name;
  std::string yardstick;
  std::string unit;
  Bound bound;
  double must;
  double aim;
  size_t rounds;                   // where the caller does not say
  std::function<Sides()> prepare;  // throws where the two sides do not come to the same result
};

// What the rounds gave, sorted out.
struct Result {
  double ours;
  double yardstick;
  double lowerQuartile;
  double ratio;
  double upperQuartile;
};

// Runs the sides in turn, `rounds` times after one round that is not counted.
Result measure(const Figure& figure, size_t rounds);

bool holds(const Figure& figure, const Result& result);

// The value at `part` (0 to 1) of the samples' order.
double quantile(std::vector<double> samples, double part);

// Throws where the two sides of a figure differ.
void requireEqual(const std::string& ours, const std::string& yardstick);

// All figures, in the order of the table.
std::vector<Figure> writingFigures();
std::vector<Figure> decodingFigures();
std::vector<Figure> queueFigures();
std::vector<Figure> requestFigures();
std::vector<Figure> conversionFigures();
std::vector<Figure> socketFigures();

}  // namespace orvane::bench
