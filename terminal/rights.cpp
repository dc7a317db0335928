#include "terminal/rights.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

struct NameRow {
  Right right;
  std::string_view name;
};

constexpr std::array<NameRow, 3> kNames{{
    {Right::See, "see"},
    {Right::Cancel, "cancel"},
    {Right::Trade, "trade"},
}};

}  // namespace

std::string_view rightName(Right right) {
  return std::find_if(kNames.begin(), kNames.end(), [&](const NameRow& row) { return row.right == right; })->name;
}

Rights Rights::read(std::string_view list) {
  int bits = 0;
  for (size_t begin = 0; begin <= list.size();) {
    const size_t end = std::min(list.find(',', begin), list.size());
    const std::string_view name = list.substr(begin, end - begin);
    const auto* row =
        std::find_if(kNames.begin(), kNames.end(), [&](const NameRow& each) { return each.name == name; });
    if (row == kNames.end()) {
      throw std::invalid_argument(fmt::format("\"{}\" is not a right: name one or more of see,cancel,trade", name));
    }
    bits |= static_cast<int>(row->right);
    begin = end + 1;
  }
  return Rights(bits);
}

std::vector<std::string_view> Rights::names() const {
  std::vector<std::string_view> names;
  for (const NameRow& row : kNames) {
    if (has(row.right)) names.push_back(row.name);
  }
  return names;
}

}  // namespace orvane::terminal
