#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "bench/figure.h"
#include "bench/memory.h"
#include "bench/phones.h"

namespace orvane::bench {
namespace {

std::vector<Figure> allFigures() {
  std::vector<Figure> all;
  for (const auto figures :
       {writingFigures, decodingFigures, queueFigures, requestFigures, conversionFigures, socketFigures}) {
    std::vector<Figure> part = figures();
    std::move(part.begin(), part.end(), std::back_inserter(all));
  }
  return all;
}

std::string bound(const Figure& figure, double value) {
  return fmt::format("{}{:.2f}", figure.bound == Bound::AtMost ? "≤ " : "≥ ", value);
}

std::string tableRow(const Figure& figure, const Result& result) {
  return fmt::format("| {} | {} | {:.4g} {} | {:.4g} {} | **{:.2f}** ({:.2f}–{:.2f}) | {} | {} |\n", figure.name,
                     figure.yardstick, result.ours, figure.unit, result.yardstick, figure.unit, result.ratio,
                     result.lowerQuartile, result.upperQuartile, bound(figure, figure.must), bound(figure, figure.aim));
}

// Prints the memory's table; whether it holds.
bool runMemory() {
  const std::vector<RequestMemory> requests = measureMemory();
  fmt::print(
      "\n| Memory of one position.list | Reply | Allocations | for each row | Peak | for each row |\n"
      "|---|---|---|---|---|---|\n");
  for (const RequestMemory& request : requests) {
    const auto rows = static_cast<double>(request.rows);
    fmt::print("| {} rows | {} B | {} | {:.1f} | {} B | {:.0f} B |\n", request.rows, request.replyBytes,
               request.allocations, static_cast<double>(request.allocations) / rows, request.peakBytes,
               static_cast<double>(request.peakBytes) / rows);
  }
  const bool good = growsNoFasterThanRows(requests);
  fmt::print("{}", good ? "" : "memory: MISSED, 10,000 rows cost more for each row than 100\n");
  return good;
}

struct Options {
  std::string filter;
  size_t rounds = 0;
  bool check = false;
};

int run(const Options& options) {
  std::string table =
      "| Figure | Yardstick | Ours | Yardstick's | Ratio (quartiles) | Must | Aim |\n"
      "|---|---|---|---|---|---|---|\n";
  bool allHold = true;
  for (const Figure& figure : allFigures()) {
    if (figure.name.find(options.filter) == std::string::npos) {
      continue;
    }
    const Result result = measure(figure, options.rounds > 0 ? options.rounds : figure.rounds);
    const bool good = holds(figure, result);
    fmt::print("{:36} {:6.3f} ({:.3f} to {:.3f})  must {}  aim {}{}\n", figure.name, result.ratio, result.lowerQuartile,
               result.upperQuartile, bound(figure, figure.must), bound(figure, figure.aim), good ? "" : "  MISSED");
    std::fflush(stdout);
    table += tableRow(figure, result);
    allHold = allHold && good;
  }
  fmt::print("\n{}", table);
  if (std::string_view("memory").find(options.filter) != std::string_view::npos) {
    allHold = runMemory() && allHold;
  }
  return options.check && !allHold ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace
}  // namespace orvane::bench

int main(int argc, char** argv) try {
  orvane::bench::Options options;
  std::string echoFile;
  CLI::App app("Measures the library against small code of another kind, side by side in one run.");
  app.add_option("--filter", options.filter, "Only figures whose name holds this text");
  app.add_option("--rounds", options.rounds, "Rounds of each figure; by default 31 or more");
  app.add_flag("--check", options.check, "Exit with 1 where a figure misses what it must reach");
  app.add_option("--echo-server", echoFile, "")->group("");  // what the program calls itself with
  CLI11_PARSE(app, argc, argv);
  if (!echoFile.empty()) {
    std::ifstream file(echoFile);
    orvane::bench::runEchoServer({std::istreambuf_iterator<char>(file), {}});
  }
  return orvane::bench::run(options);
} catch (const std::exception& error) {
  fmt::print(stderr, "pocket-bench: {}\n", error.what());
  return EXIT_FAILURE;
}
