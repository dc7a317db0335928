#include "terminal/phones/loginlimit.h"

#include <algorithm>

namespace orvane::terminal {
namespace {

constexpr int kMaxWrong = 10;
constexpr std::chrono::minutes kWindow{1};
constexpr size_t kSweepSize = 1024;  // networks; fewer are not worth a sweep

}  // namespace

bool LoginLimit::allowWrong(const std::string& network, BootTime now) {
  if (counts_.size() >= sweepSize_) {
    std::erase_if(counts_, [&](const auto& entry) { return now - entry.second.since >= kWindow; });
    sweepSize_ = std::max(kSweepSize, 2 * counts_.size());
  }
  Count& count = counts_[network];
  if (count.wrong == 0 || now - count.since >= kWindow) count = {now, 0};
  return ++count.wrong <= kMaxWrong;
}

}  // namespace orvane::terminal
