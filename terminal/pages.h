#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::terminal {

// The head of an HTTP request. Untrusted; absent headers are empty. Valid during the call that passes it.
struct HttpRequest {
  std::string_view method;
  std::string_view path;  // without its query
  std::string_view host;
  std::string_view origin;
  std::string_view authorization;
  std::string_view acceptEncoding;
  std::string_view ifNoneMatch;
  std::string_view network;  // rate-limit key, see Session
  bool isUpgrade = false;    // to a WebSocket
  bool isLoopback = false;   // from this machine
};

// The answer to a plain HTTP request.
struct Page {
  unsigned status = 200;
  const char* contentType = "text/plain; charset=utf-8";
  std::string body;
  std::string etag{};           // with its quotes; empty if the page must not be stored
  std::string_view encoding{};  // of the body; empty if it is plain
};

// Makes the pages that change, and those that need a token.
class IPageOwner {
 public:
  // Empty: the owner has no such page.
  using Answer = std::function<void(std::optional<Page>)>;

  virtual ~IPageOwner() = default;

  // Calls `answer` once, now or later, on the same thread.
  virtual void makePage(const HttpRequest& request, Answer answer) = 0;
};

}  // namespace orvane::terminal
