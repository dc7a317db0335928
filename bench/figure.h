#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace orvane::bench {

enum class Bound { AtMost, AtLeast };

// The two sides of a figure. Each call runs one slice and returns what it measured, in the figure's unit.
struct Sides {
  std::function<double()> ours;
  std::function<double()> yardstick;
};

// The ratio of our result to the yardstick's, and the bound that it must keep.
struct Figure {
  std::string name;
  std::string yardstick;
  std::string unit;  // ns, B, or something per second
  Bound bound;
  double must;
  double aim;
  size_t rounds;                   // unless the caller asks for another number
  std::function<Sides()> prepare;  // throws if the two sides give different results
};

// Medians over all rounds, and the quartiles of the ratio.
struct Result {
  double ours;
  double yardstick;
  double lowerQuartile;
  double ratio;
  double upperQuartile;
};

// Runs the sides in turn, `rounds` times; several rounds begin with a warm-up round.
Result measure(const Figure& figure, size_t rounds);

bool holds(const Figure& figure, const Result& result);

// The sample at `part` of the sorted order: 0 is the smallest, 1 the largest.
double quantile(std::vector<double> samples, double part);

// Throws std::runtime_error if the two differ.
void requireEqual(const std::string& ours, const std::string& yardstick);

// All figures, in the order of the table.
std::vector<Figure> writingFigures();
std::vector<Figure> decodingFigures();
std::vector<Figure> queueFigures();
std::vector<Figure> requestFigures();
std::vector<Figure> conversionFigures();
std::vector<Figure> socketFigures();
std::vector<Figure> roundTripFigures();
std::vector<Figure> listFigures();
std::vector<Figure> crowdFigures();
std::vector<Figure> footprintFigures();

}  // namespace orvane::bench
