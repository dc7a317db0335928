#include "terminal/gateway/pages.h"

#include <algorithm>
#include <array>

namespace orvane::terminal {
namespace {

Page frontPage() { return {.body = "pocket-terminal is running. Phones connect to /ws.\n"}; }

Page socketPage() { return {.status = 426, .body = "This address takes WebSocket connections only.\n"}; }

struct Row {
  std::string_view path;
  Page (*make)();
};

constexpr std::array<Row, 2> kPages{{
    {"/", frontPage},
    {"/ws", socketPage},
}};

}  // namespace

Page findPage(std::string_view method, std::string_view path) {
  if (method != "GET") return {.status = 405, .body = "Only GET is served here.\n"};
  const auto* row = std::find_if(kPages.begin(), kPages.end(), [&](const Row& each) { return each.path == path; });
  return row == kPages.end() ? Page{.status = 404, .body = "There is no such page.\n"} : row->make();
}

}  // namespace orvane::terminal
