#pragma once

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace orvane::test {

// The choices of a random run, the same for the same seed.
class RandomSteps {
 protected:
  explicit RandomSteps(uint32_t seed) : random_(seed) {}

  int64_t pick(int64_t low, int64_t high) { return std::uniform_int_distribution<int64_t>(low, high)(random_); }
  bool chance(int percent) { return pick(1, 100) <= percent; }
  template <typename Range>
  auto oneOf(const Range& range) {
    return *std::next(std::begin(range), pick(0, static_cast<int64_t>(std::size(range)) - 1));
  }
  int32_t oneOf(std::initializer_list<int32_t> values) { return oneOf<std::initializer_list<int32_t>>(values); }

 private:
  std::mt19937 random_;
};

// Runs one seed after the other, until one fails. The environment variable `name` is their number, `name`_FROM the
// first.
template <typename Run>
void runSeeds(const std::string& name, int64_t usually, const Run& run) {
  const auto number = [](const std::string& variable, int64_t otherwise) {
    const char* text = std::getenv(variable.c_str());
    return text == nullptr ? otherwise : std::atoll(text);
  };
  const int64_t from = number(name + "_FROM", 1);
  const int64_t end = from + number(name, usually);
  for (int64_t seed = from; seed < end && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(name + "_FROM=" + std::to_string(seed) + " " + name + "=1");
    run(static_cast<uint32_t>(seed));
  }
}

}  // namespace orvane::test
