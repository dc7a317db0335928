#include "bench/lists.h"

#include <memory>
#include <numeric>

#include <fmt/format.h>

#include "bench/figure.h"
#include "bench/paperdesk.h"
#include "bench/servers.h"

namespace orvane::bench {
namespace {

constexpr std::array<const char*, 2> kTopics{"position.list", "order.list"};

// One list from both servers, to one client that does nothing else.
class Wire {
 public:
  Wire(const Desk& desk, const std::string& topic, size_t rows)
      : rows_(rows), terminal_(desk.start("still")), pair_(desk, terminal_, topic, selectorOfRows(rows)) {}

  // Nanoseconds per row.
  double ours() { return perRow(ours_); }
  double bare() { return perRow(bare_); }

 private:
  // Of several round trips if the list is short.
  double perRow(Clients& client) const {
    const size_t times = std::max<size_t>(1, 1000 / rows_);
    return client.load(times) / static_cast<double>(times * rows_);
  }

  size_t rows_;
  Server terminal_;
  ServerPair pair_;
  Clients ours_ = pair_.terminalClients(1);
  Clients bare_ = pair_.bareClients(1);
};

void measureOnWire(ListCost& cost, const Desk& desk, size_t rounds) {
  Wire wire(desk, cost.topic, cost.rows);
  std::vector<double> ours;
  std::vector<double> bare;
  for (size_t round = 0; round < rounds; ++round) {
    ours.push_back(wire.ours());
    bare.push_back(wire.bare());
  }
  cost.whole = quantile(ours, 0.5);
  cost.bare = quantile(bare, 0.5);
  cost.parts.back() = cost.whole - std::accumulate(cost.parts.begin(), cost.parts.begin() + kLocalParts, 0.0);
}

Sides growth(const std::string& topic) {
  struct Bench {
    explicit Bench(const std::string& topic) : many(manyDesk, topic, 10'000), few(fewDesk, topic, 100) {}
    Desk manyDesk{10'000};
    Desk fewDesk{100};
    Wire many;
    Wire few;
  };
  const auto bench = std::make_shared<Bench>(topic);
  return {[=] { return bench->many.ours(); }, [=] { return bench->few.ours(); }};
}

}  // namespace

std::vector<ListCost> measureLists(size_t rounds) {
  std::vector<ListCost> lists;
  for (const char* topic : kTopics) {
    for (const size_t rows : std::initializer_list<size_t>{10, 100, 1000, 10'000}) {
      ListCost cost{.topic = topic, .rows = rows};
      const Desk desk(rows);
      measureLocalParts(cost, desk.folder(), rounds);
      measureOnWire(cost, desk, rounds);
      lists.push_back(std::move(cost));
    }
  }
  return lists;
}

std::vector<Figure> listFigures() {
  std::vector<Figure> figures;
  for (const std::string topic : kTopics) {
    figures.push_back({topic + ", a row of 10,000", "a row of 100", "ns", Bound::AtMost, 1.3, 1.0, 15,
                       [topic] { return growth(topic); }});
  }
  return figures;
}

}  // namespace orvane::bench
