#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "bench/bareserver.h"
#include "bench/report.h"

namespace orvane::bench {
namespace {

constexpr size_t kListRounds = 15;

std::vector<Figure> allFigures() {
  std::vector<Figure> all;
  for (const auto figures : {writingFigures, decodingFigures, queueFigures, requestFigures, conversionFigures,
                             socketFigures, roundTripFigures, listFigures, crowdFigures, footprintFigures}) {
    std::vector<Figure> part = figures();
    std::move(part.begin(), part.end(), std::back_inserter(all));
  }
  return all;
}

struct Options {
  std::string filter;
  std::string chartFile;
  size_t rounds = 0;  // 0: as many as each figure has by itself
  bool check = false;

  bool wants(std::string_view name) const { return name.find(filter) != std::string_view::npos; }
  size_t roundsOr(size_t usual) const { return rounds > 0 ? rounds : usual; }
};

// Whether all figures hold.
bool measureFigures(const Options& options, std::vector<Measured>& figures) {
  bool allHold = true;
  for (const Figure& figure : allFigures()) {
    if (options.wants(figure.name)) {
      figures.push_back({figure, measure(figure, options.roundsOr(figure.rounds))});
      fmt::print(stderr, "{}", progressLine(figures.back()));
      allHold = holds(figure, figures.back().result) && allHold;
    }
  }
  return allHold;
}

void writeFile(const std::string& name, const std::string& text) {
  std::ofstream file(name);
  if (!(file << text << std::flush)) throw std::runtime_error(fmt::format("cannot write {}", name));
}

int run(const Options& options) {
  std::vector<Measured> figures;
  std::vector<RequestMemory> memory;
  std::vector<ListCost> lists;
  bool allHold = measureFigures(options, figures);
  if (options.wants("memory")) {
    memory = measureMemory();
    if (!growsNoFasterThanRows(memory)) {
      fmt::print(stderr, "memory: MISSED, a row of 10,000 costs more than one of 100\n");
      allHold = false;
    }
  }
  if (options.wants("lists")) lists = measureLists(options.roundsOr(kListRounds));
  fmt::print("{}{}{}{}", machineText(), figureTable(figures), listTable(lists), memoryTable(memory));
  if (!options.chartFile.empty()) writeFile(options.chartFile, chart(figures, lists));
  return options.check && !allHold ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace
}  // namespace orvane::bench

int main(int argc, char** argv) try {
  orvane::bench::Options options;
  std::string replyFile;
  CLI::App app(
      "Measures the library and the terminal beside small code that does the same work. Prints Markdown tables; "
      "progress goes to standard error.");
  app.add_option("--filter", options.filter, "Only figures and tables whose name contains this text");
  app.add_option("--rounds", options.rounds, "Rounds of each figure; by default as many as it needs");
  app.add_option("--chart", options.chartFile, "Write a chart of the round trips and the lists to this SVG file");
  app.add_flag("--check", options.check, "Exit with 1 if a figure misses what it must reach");
  app.add_option("--bare-server", replyFile, "")->group("");  // how the program starts its own yardstick
  CLI11_PARSE(app, argc, argv);
  if (!replyFile.empty()) {
    std::ifstream file(replyFile);
    orvane::bench::runBareServer({std::istreambuf_iterator<char>(file), {}});
  }
  return orvane::bench::run(options);
} catch (const std::exception& error) {
  fmt::print(stderr, "pocket-bench: {}\n", error.what());
  return EXIT_FAILURE;
}
