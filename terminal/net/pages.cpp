#include "terminal/net/pages.h"

#include <algorithm>
#include <array>

#include "terminal/page/assets.h"

namespace orvane::terminal {
namespace {

Page socketPage() { return {.status = 426, .body = "This address takes WebSocket connections only.\n"}; }

struct Row {
  std::string_view path;
  Page (*make)();
};

constexpr std::array<Row, 1> kPages{{
    {"/ws", socketPage},
}};

}  // namespace

Page findPage(std::string_view method, std::string_view path) {
  if (method != "GET") return {.status = 405, .body = "Only GET is served here.\n"};
  for (const Asset& asset : assets()) {
    if (asset.path == path) return {.contentType = asset.contentType, .body = std::string(asset.body)};
  }
  const auto* row = std::find_if(kPages.begin(), kPages.end(), [&](const Row& each) { return each.path == path; });
  return row == kPages.end() ? Page{.status = 404, .body = "There is no such page.\n"} : row->make();
}

}  // namespace orvane::terminal
