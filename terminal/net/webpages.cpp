#include "terminal/net/webpages.h"

#include <array>
#include <boost/beast/http/rfc7230.hpp>
#include <utility>

#include <fmt/format.h>

#include "terminal/page/assets.h"

namespace orvane::terminal {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view Asset::*>, 2> kCodings{
    {{"br", &Asset::brotli}, {"gzip", &Asset::gzip}}};  // the shorter one first

bool isZero(boost::beast::string_view weight) { return weight.find_first_not_of("0.") == weight.npos; }

bool accepts(std::string_view acceptEncoding, std::string_view coding) {
  for (const auto& [name, parameters] : boost::beast::http::ext_list({acceptEncoding.data(), acceptEncoding.size()})) {
    if (!boost::beast::iequals(name, {coding.data(), coding.size()})) continue;
    const auto weight = parameters.begin();
    return weight == parameters.end() || !isZero(weight->second);
  }
  return false;
}

Page packed(const Asset& asset, std::string_view acceptEncoding) {
  for (const auto& [coding, body] : kCodings) {
    if ((asset.*body).empty() || !accepts(acceptEncoding, coding)) continue;
    return {.contentType = asset.contentType,
            .body = std::string(asset.*body),
            .etag = fmt::format("\"{}-{}\"", asset.hash, coding),
            .encoding = coding};
  }
  return {
      .contentType = asset.contentType, .body = std::string(asset.plain), .etag = fmt::format("\"{}\"", asset.hash)};
}

}  // namespace

std::optional<Page> findFile(const HttpRequest& request) {
  if (request.method != "GET") return std::nullopt;
  for (const Asset& asset : assets()) {
    if (asset.path != request.path) continue;
    Page page = packed(asset, request.acceptEncoding);
    // The quotes belong to the tag, so no other tag contains it.
    const bool isKnown = request.ifNoneMatch == "*" || request.ifNoneMatch.find(page.etag) != std::string_view::npos;
    if (isKnown) return Page{.status = 304, .contentType = page.contentType, .body = {}, .etag = std::move(page.etag)};
    return page;
  }
  return std::nullopt;
}

Page missingPage(std::string_view method, std::string_view path) {
  if (method != "GET") return {.status = 405, .body = "Only GET is served here.\n"};
  if (path == "/ws") return {.status = 426, .body = "This address takes WebSocket connections only.\n"};
  return {.status = 404, .body = "There is no such page.\n"};
}

}  // namespace orvane::terminal
