#include "bench/chart.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>

#include <fmt/format.h>

namespace orvane::bench {
namespace {

constexpr double kWidth = 860;
constexpr double kLabelWidth = 300;
constexpr double kBarWidth = 490;
constexpr double kRowHeight = 24;
constexpr double kBarHeight = 15;
constexpr double kMargin = 16;

// Readable on white and on black, and apart for the colour-blind.
constexpr std::array<std::string_view, 6> kColours{"#4477aa", "#ccbb44", "#ee6677", "#aa3377", "#66ccee", "#228833"};

constexpr std::string_view kStyle = R"(<style>
text { font: 13px system-ui, sans-serif; fill: #1f2328 }
.title { font-weight: 600 }
.ground { fill: #ffffff }
@media (prefers-color-scheme: dark) { text { fill: #e6edf3 } .ground { fill: #0d1117 } }
</style>
)";

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) result += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
  return result;
}

double sum(const Bar& bar) { return std::accumulate(bar.parts.begin(), bar.parts.end(), 0.0); }

// Appends elements from top to bottom.
class Drawing {
 public:
  void add(const Panel& panel) {
    text(kMargin, panel.title, R"( class="title")");
    y_ += kRowHeight;
    addLegend(panel.legend);
    double largest = 0;
    for (const Bar& bar : panel.bars) largest = std::max(largest, sum(bar));
    for (const Bar& bar : panel.bars) addBar(bar, largest);
    y_ += kMargin;
  }

  std::string finish() const {
    return fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\">\n"
        "{2}<rect class=\"ground\" width=\"{0}\" height=\"{1}\"/>\n{3}</svg>\n",
        kWidth, y_, kStyle, elements_);
  }

 private:
  void text(double x, std::string_view text, std::string_view attributes = "") {
    elements_ +=
        fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\"{}>{}</text>\n", x, y_ + kBarHeight - 3, attributes, escaped(text));
  }
  void rectangle(double x, double width, size_t colour) {
    elements_ += fmt::format("<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{}\" fill=\"{}\"/>\n", x, y_,
                             width, kBarHeight, kColours[colour % kColours.size()]);
  }

  void addLegend(const std::vector<std::string>& legend) {
    constexpr double kEntryWidth = 115;
    double x = kLabelWidth;
    for (size_t colour = 0; colour < legend.size(); ++colour) {
      rectangle(x, kBarHeight, colour);
      text(x + kBarHeight + 5, legend[colour]);
      x += kEntryWidth;
    }
    y_ += kRowHeight;
  }

  void addBar(const Bar& bar, double largest) {
    if (!bar.label.empty()) text(kLabelWidth - 10, bar.label, R"( text-anchor="end")");
    double x = kLabelWidth;
    for (size_t part = 0; part < bar.parts.size(); ++part) {
      const double width = std::max(0.0, bar.parts[part]) / largest * kBarWidth;
      rectangle(x, width, bar.firstColour + part);
      x += width;
    }
    text(x + 6, fmt::format(fmt::runtime(sum(bar) < 999.5 ? "{:.3g}" : "{:.0f}"), sum(bar)));
    y_ += kRowHeight;
  }

  double y_ = kMargin;
  std::string elements_;
};

}  // namespace

std::string writeChart(const std::vector<Panel>& panels) {
  Drawing drawing;
  for (const Panel& panel : panels) {
    if (!panel.bars.empty()) drawing.add(panel);
  }
  return drawing.finish();
}

}  // namespace orvane::bench
