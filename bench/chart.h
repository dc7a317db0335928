#pragma once

#include <string>
#include <vector>

namespace orvane::bench {

// A horizontal bar of one or more stacked parts, all in the panel's unit.
struct Bar {
  std::string label;
  std::vector<double> parts;
  size_t firstColour = 0;  // of the panel's legend
};

// Bars on one scale from 0.
struct Panel {
  std::string title;
  std::vector<std::string> legend;  // one entry for each colour
  std::vector<Bar> bars;
};

// The panels below each other, as SVG that follows the reader's light or dark mode. Texts are UTF-8.
std::string writeChart(const std::vector<Panel>& panels);

}  // namespace orvane::bench
