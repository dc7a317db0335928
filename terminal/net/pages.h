#pragma once

#include <string>
#include <string_view>

namespace orvane::terminal {

// What the gateway answers to a plain HTTP request.
struct Page {
  unsigned status = 200;
  const char* contentType = "text/plain; charset=utf-8";
  std::string body;
};

// `path` comes without its query.
Page findPage(std::string_view method, std::string_view path);

}  // namespace orvane::terminal
