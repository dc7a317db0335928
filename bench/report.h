#pragma once

#include <string>
#include <vector>

#include "bench/figure.h"
#include "bench/lists.h"
#include "bench/memory.h"

namespace orvane::bench {

struct Measured {
  Figure figure;
  Result result;
};

// One line for the terminal while the figures are measured.
std::string progressLine(const Measured& measured);

// Markdown, each ending in an empty line; empty if there is nothing to show.
std::string machineText();  // date, processor, compiler
std::string figureTable(const std::vector<Measured>& figures);
std::string memoryTable(const std::vector<RequestMemory>& requests);
std::string listTable(const std::vector<ListCost>& lists);

// SVG of the round trips and of the lists' parts.
std::string chart(const std::vector<Measured>& figures, const std::vector<ListCost>& lists);

}  // namespace orvane::bench
