#include "terminal/phones/topics.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

using enum Right;
using enum BodyShape;

// The order is that of the metrics' lines.
constexpr std::array kTopics = std::to_array<Topic>({
    {"account.list"},
    {"alert.clear", See, List, false, false, Answerer::Alerts},
    {"alert.list", See, List, false, false, Answerer::Alerts},
    {"alert.set", See, List, false, false, Answerer::Alerts},
    {"capital.list"},
    {"creditinfo.list"},
    {"equity.list"},
    {"marginrate.list", See, List, true},
    {"monitor.list"},
    {"monitor.manual.clean", Trade, List, true},
    {"monitor.manual.list", See, List, true},
    {"monitor.manual.update", Trade, List, true},
    {"monitor.sync.order.list", See, List, true},
    {"monitor.sync.order.new", Trade, List, true, true},
    {"order.cancel", Cancel, List, true},
    {"order.condition.list"},
    {"order.list"},
    {"order.new", Trade, OrderList, true},
    {"order.rates"},
    {"position.codetype.list"},
    {"position.list"},
    {"quote.curve"},
    {"quote.list"},
    {"quote.set", Trade},
    {"quote.watch", See, List, false, false, Answerer::QuoteWatch},
    {"terminal.info"},
    {"trader.list"},
    {"other"},
});

}  // namespace

std::span<const Topic> topics() { return kTopics; }

const Topic& findTopic(const std::string& name) {
  const std::string_view known = name.c_str();
  return *std::find_if(kTopics.begin(), kTopics.end() - 1, [&](const Topic& row) { return row.name == known; });
}

size_t topicIndex(const Topic& topic) { return static_cast<size_t>(&topic - kTopics.data()); }

std::string findRightsFault(Rights rights, const Topic& topic) {
  if (rights.has(topic.right)) return {};
  return fmt::format("this token may not {}: its rights are {}", rightName(topic.right),
                     fmt::join(rights.names(), ", "));
}

}  // namespace orvane::terminal
