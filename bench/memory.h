#pragma once

#include <cstddef>
#include <vector>

namespace orvane::bench {

// What one "position.list" takes of the heap, from the body to the reply, the host's own records included.
struct RequestMemory {
  size_t rows;
  size_t replyBytes;
  size_t allocations;
  size_t peakBytes;  // above what was taken before
};

// For 1, 100 and 10,000 rows.
std::vector<RequestMemory> measureMemory();

// Whether 10,000 rows cost no more for each row than 100 do.
bool growsNoFasterThanRows(const std::vector<RequestMemory>& requests);

}  // namespace orvane::bench
