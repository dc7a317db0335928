#pragma once

#include <string>
#include <vector>

#include "terminal/trading/equitytable.h"

namespace orvane::terminal {

// The body of "equity.list".
struct EquityQuery {
  EquityRange range;
  size_t points = 0;
};

// Returns why the body is invalid, UTF-8; empty if `query` was read.
std::string readEquityQuery(const std::string& body, EquityQuery& query);

// The reply, UTF-8: the rows, thinned to `points`.
std::string equityText(std::vector<EquityRow> rows, size_t points);

}  // namespace orvane::terminal
