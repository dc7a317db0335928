#include "terminal/net/webpages.h"

#include "terminal/page/assets.h"

namespace orvane::terminal {

Page findWebPage(std::string_view method, std::string_view path) {
  if (method != "GET") return {.status = 405, .body = "Only GET is served here.\n"};
  for (const Asset& asset : assets()) {
    if (asset.path == path) return {.contentType = asset.contentType, .body = std::string(asset.body)};
  }
  if (path == "/ws") return {.status = 426, .body = "This address takes WebSocket connections only.\n"};
  return {.status = 404, .body = "There is no such page.\n"};
}

}  // namespace orvane::terminal
