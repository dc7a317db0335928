#include <memory>

#include "bench/asker.h"
#include "bench/figure.h"
#include "bench/paperdesk.h"
#include "bench/servers.h"

namespace orvane::bench {
namespace {

constexpr size_t kOthers = 20;

struct Bench {
  Desk desk{20};
  Server terminal = desk.start("still");
  ServerPair pair{desk, terminal, "position.list", selectorOfRows(20)};
  Asker ours{pair.terminalClients(1), pair.terminalClients(kOthers)};
  Asker bare{pair.bareClients(1), pair.bareClients(kOthers)};
};

Sides sides(double part, bool isBusy) {
  const auto bench = std::make_shared<Bench>();
  return {[=] { return bench->ours.measure(part, isBusy); }, [=] { return bench->bare.measure(part, isBusy); }};
}

}  // namespace

std::vector<Figure> roundTripFigures() {
  struct Row {
    const char* name;
    double part;
    bool isBusy;
    double must;
  };
  std::vector<Figure> figures;
  for (const Row& row : {Row{"round trip, idle, median", 0.5, false, 4},
                         {"round trip, idle, 99th percentile", 0.99, false, 4},
                         {"round trip, idle, 99.9th percentile", 0.999, false, 5},
                         {"round trip, 200 requests/s of others, median", 0.5, true, 4},
                         {"round trip, 200 requests/s of others, 99th percentile", 0.99, true, 5},
                         {"round trip, 200 requests/s of others, 99.9th percentile", 0.999, true, 5}}) {
    figures.push_back({row.name, "bare Beast server, the same bytes", "ns", Bound::AtMost, row.must, 2, 21,
                       [=] { return sides(row.part, row.isBusy); }});
  }
  return figures;
}

}  // namespace orvane::bench
