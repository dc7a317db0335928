#include <memory>

#include "bench/figure.h"
#include "bench/paperdesk.h"
#include "bench/servers.h"

namespace orvane::bench {
namespace {

constexpr size_t kClients = 80;     // fewer than one token may open
constexpr size_t kRequests = 1000;  // of one slice

struct Bench {
  Desk desk{20};
  Server terminal = desk.start("still");
  ServerPair pair{desk, terminal, "position.list", selectorOfRows(20)};
  Clients ours = pair.terminalClients(kClients);
  Clients bare = pair.bareClients(kClients);
};

Sides sides() {
  const auto bench = std::make_shared<Bench>();
  const auto perSecond = [](Clients& clients) { return kRequests * 1e9 / clients.load(kRequests); };
  return {[=] { return perSecond(bench->ours); }, [=] { return perSecond(bench->bare); }};
}

}  // namespace

std::vector<Figure> socketFigures() {
  return {{"terminal, 80 WebSockets, position.list of 20 rows", "bare Beast server, the same bytes", "requests/s",
           Bound::AtLeast, 0.60, 0.85, 31, sides}};
}

}  // namespace orvane::bench
