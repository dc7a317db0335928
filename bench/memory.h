#pragma once

#include <cstddef>
#include <vector>

namespace orvane::bench {

// Heap use of one "position.list", from the body to the reply, the host's own records included.
struct RequestMemory {
  size_t rows;
  size_t replyBytes;
  size_t allocations;
  size_t peakBytes;  // above what was in use before
};

// For 1, 100 and 10,000 rows, in this order.
std::vector<RequestMemory> measureMemory();

// Whether the cost per row is no higher for 10,000 rows than for 100.
bool growsNoFasterThanRows(const std::vector<RequestMemory>& requests);

}  // namespace orvane::bench
