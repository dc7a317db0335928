#pragma once

#include <span>
#include <string_view>

namespace orvane::terminal {

// A file of the web page, as the build made it.
struct Asset {
  std::string_view path;  // as a browser asks for it, such as "/app.js"
  const char* contentType;
  std::string_view hash;  // of `plain`, in hexadecimal
  std::string_view plain;
  std::string_view gzip;    // `plain` compressed; empty if that saves nothing
  std::string_view brotli;  // the same
};

std::span<const Asset> assets();

}  // namespace orvane::terminal
