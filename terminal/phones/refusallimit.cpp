#include "terminal/phones/refusallimit.h"

namespace orvane::terminal {
namespace {

constexpr uint64_t kMaxLines = 10;

}  // namespace

bool RefusalLimit::allow(int64_t token, const std::string& name) {
  Count& count = counts_[token];
  if (count.refused == 0) count.name = name;
  return ++count.refused <= kMaxLines;
}

std::vector<RefusalLimit::Sum> RefusalLimit::takeSums() {
  std::vector<Sum> sums;
  for (auto& [token, count] : counts_) {
    if (count.refused > kMaxLines) sums.push_back({std::move(count.name), count.refused - kMaxLines});
  }
  counts_.clear();
  return sums;
}

}  // namespace orvane::terminal
