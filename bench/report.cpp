#include "bench/report.h"

#include <array>
#include <chrono>
#include <cmath>
#include <fstream>
#include <thread>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "bench/chart.h"

namespace orvane::bench {
namespace {

constexpr std::string_view kRoundTrip = "round trip, ";

// 1234567 as 1,234,567.
std::string grouped(size_t number) {
  std::string text = std::to_string(number);
  for (size_t place = text.size(); place > 3; place -= 3) text.insert(place - 3, ",");
  return text;
}

// Three significant digits; times in the unit that leaves at most three before the point.
std::string amount(double value, const std::string& unit) {
  if (unit != "ns") {
    const double step = std::pow(10, std::max(0.0, std::floor(std::log10(value)) - 2));
    return fmt::format("{} {}", grouped(static_cast<size_t>(std::round(value / step) * step)), unit);
  }
  constexpr std::array<const char*, 4> kUnits{"ns", "µs", "ms", "s"};
  size_t scale = 0;
  for (; value >= 999.5 && scale + 1 < kUnits.size(); ++scale) value /= 1000;
  return fmt::format("{:.3g} {}", value, kUnits[scale]);
}

std::string bound(const Figure& figure, double value) {
  return fmt::format("{}{:.2f}", figure.bound == Bound::AtMost ? "≤ " : "≥ ", value);
}

std::string processorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "an unnamed processor";
}

double inMicroseconds(double nanoseconds) { return nanoseconds / 1000; }

}  // namespace

std::string progressLine(const Measured& measured) {
  const auto& [figure, result] = measured;
  return fmt::format("{:56} {:6.3f} ({:.3f} to {:.3f})  must {}  aim {}{}\n", figure.name, result.ratio,
                     result.lowerQuartile, result.upperQuartile, bound(figure, figure.must), bound(figure, figure.aim),
                     holds(figure, result) ? "" : "  MISSED");
}

std::string machineText() {
  return fmt::format("Measured on {:%Y-%m-%d}: {}, {} processors, compiled by {}.\n\n",
                     fmt::localtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())),
                     processorName(), std::thread::hardware_concurrency(), POCKET_BENCH_COMPILER);
}

std::string figureTable(const std::vector<Measured>& figures) {
  if (figures.empty()) return {};
  std::string table =
      "| Figure | Yardstick | Ours | Yardstick's | Ratio (quartiles) | Must | Aim |\n"
      "|---|---|---|---|---|---|---|\n";
  for (const auto& [figure, result] : figures) {
    table +=
        fmt::format("| {} | {} | {} | {} | **{:.2f}** ({:.2f}–{:.2f}) | {} | {} |\n", figure.name, figure.yardstick,
                    amount(result.ours, figure.unit), amount(result.yardstick, figure.unit), result.ratio,
                    result.lowerQuartile, result.upperQuartile, bound(figure, figure.must), bound(figure, figure.aim));
  }
  return table + '\n';
}

std::string memoryTable(const std::vector<RequestMemory>& requests) {
  if (requests.empty()) return {};
  std::string table =
      "| Heap of one position.list | Reply | Allocations | per row | Peak | per row |\n"
      "|---|---|---|---|---|---|\n";
  for (const RequestMemory& request : requests) {
    const auto rows = static_cast<double>(request.rows);
    table += fmt::format("| {} row{} | {} B | {} | {:.1f} | {} B | {:.0f} B |\n", grouped(request.rows),
                         request.rows == 1 ? "" : "s", grouped(request.replyBytes), grouped(request.allocations),
                         static_cast<double>(request.allocations) / rows, grouped(request.peakBytes),
                         static_cast<double>(request.peakBytes) / rows);
  }
  return table + '\n';
}

std::string listTable(const std::vector<ListCost>& lists) {
  if (lists.empty()) return {};
  std::string table = "| µs per row | Reply |";
  for (const char* part : kListParts) table += fmt::format(" {} |", part);
  table += " Whole | Bare server |\n|---|---|---|---|---|---|---|---|---|\n";
  for (const ListCost& list : lists) {
    table += fmt::format("| {}, {} rows | {} B |", list.topic, grouped(list.rows), grouped(list.replyBytes));
    for (const double part : list.parts) table += fmt::format(" {:.2f} |", inMicroseconds(part));
    table += fmt::format(" **{:.2f}** | {:.2f} |\n", inMicroseconds(list.whole), inMicroseconds(list.bare));
  }
  return table + '\n';
}

std::string chart(const std::vector<Measured>& figures, const std::vector<ListCost>& lists) {
  Panel trips{"Round trip of position.list with 20 rows, µs", {"terminal", "bare server"}, {}};
  for (const auto& [figure, result] : figures) {
    if (figure.name.starts_with(kRoundTrip)) {
      trips.bars.push_back({figure.name.substr(kRoundTrip.size()), {inMicroseconds(result.ours)}, 0});
      trips.bars.push_back({"", {inMicroseconds(result.yardstick)}, 1});
    }
  }
  Panel rows{"Where the time of a list goes, µs per row", {kListParts.begin(), kListParts.end()}, {}};
  for (const ListCost& list : lists) {
    Bar bar{fmt::format("{}, {} rows", list.topic, grouped(list.rows)), {}, 0};
    for (const double part : list.parts) bar.parts.push_back(inMicroseconds(part));
    rows.bars.push_back(std::move(bar));
  }
  return writeChart({std::move(trips), std::move(rows)});
}

}  // namespace orvane::bench
