#include "terminal/phones/pushlog.h"

#include <random>

#include <fmt/format.h>

#include "terminal/phones/frame.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxKept = 1024;
constexpr size_t kMaxKeptBytes = size_t{2} * 1024 * 1024;

std::string makeEpoch() {
  std::random_device random;
  return fmt::format("{:08x}{:08x}", random(), random());
}

}  // namespace

PushLog::PushLog() : epoch_(makeEpoch()) {}

PushLog::Text PushLog::add(const MobileMessage& message) {
  kept_.push_back(std::make_shared<const std::string>(writePush(last_ + 1, message)));
  ++last_;
  keptBytes_ += kept_.back()->size();
  Text added = kept_.back();
  while (kept_.size() > kMaxKept || keptBytes_ > kMaxKeptBytes) {
    keptBytes_ -= kept_.front()->size();
    kept_.pop_front();
  }
  return added;
}

bool PushLog::canResume(std::string_view epoch, uint64_t seq) const {
  return epoch == epoch_ && seq <= last_ && last_ - seq <= kept_.size();
}

}  // namespace orvane::terminal
