#include "bench/asker.h"

#include <chrono>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

#include "bench/figure.h"

namespace orvane::bench {
namespace {

constexpr double kOthersPerSecond = 200;
constexpr size_t kSamples = 1000;  // of one slice: the 99.9th percentile is the second largest

}  // namespace

double Asker::measure(double part, bool isBusy) {
  std::optional<std::jthread> load;
  if (isBusy) load.emplace([this](const std::stop_token& stop) { others.pace(kOthersPerSecond, stop); });
  std::vector<double> samples;
  while (samples.size() < kSamples) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    samples.push_back(client.load(1));
  }
  return quantile(samples, part);
}

}  // namespace orvane::bench
