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

struct TopicRow {
  std::string_view topic;
  Right right;
};

// Every other topic needs Right::See.
constexpr std::array<TopicRow, 6> kTopics{{
    {"order.cancel", Right::Cancel},
    {"order.new", Right::Trade},
    {"monitor.sync.order.new", Right::Trade},
    {"monitor.manual.update", Right::Trade},
    {"monitor.manual.clean", Right::Trade},
    {"quote.set", Right::Trade},
}};

std::string_view nameOf(Right right) {
  return std::find_if(kNames.begin(), kNames.end(), [&](const NameRow& row) { return row.right == right; })->name;
}

}  // namespace

Rights Rights::read(std::string_view list) {
  int bits = 0;
  for (size_t begin = 0; begin <= list.size();) {
    const size_t end = std::min(list.find(',', begin), list.size());
    const std::string_view name = list.substr(begin, end - begin);
    const auto* row =
        std::find_if(kNames.begin(), kNames.end(), [&](const NameRow& each) { return each.name == name; });
    if (row == kNames.end()) {
      throw std::invalid_argument(fmt::format("\"{}\" is no right: name one or more of see,cancel,trade", name));
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

Right rightFor(const std::string& topic) {
  const std::string_view name = topic.c_str();
  const auto* row =
      std::find_if(kTopics.begin(), kTopics.end(), [&](const TopicRow& each) { return each.topic == name; });
  return row == kTopics.end() ? Right::See : row->right;
}

std::string findRightsFault(Rights rights, const std::string& topic) {
  const Right right = rightFor(topic);
  if (rights.has(right)) return {};
  return fmt::format("this token may not {}: its rights are {}", nameOf(right), fmt::join(rights.names(), ", "));
}

}  // namespace orvane::terminal
