#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::terminal {

// Decides by the headers Host and Origin whether to serve a request. A page of another site must neither use the
// terminal through a browser that can reach it, nor read it by DNS rebinding.
class OriginPolicy {
 public:
  // True for further names of this machine, in lower case, beside localhost and its host name.
  using IsOwnName = std::function<bool(const std::string& name)>;

  // `allowed` are origins as browsers write them, "https://trade.example.com:8443". `isOwnName` may be empty.
  OriginPolicy(bool isSecure, const std::vector<std::string>& allowed, IsOwnName isOwnName);

  // Why a request with these headers is refused; empty if it is served. `host` must be an IP address, a name of this
  // machine or the host of an allowed origin, with any port. `origin` must be empty, that same host, or allowed.
  std::string findFault(std::string_view host, std::string_view origin) const;

 private:
  bool isKnownHost(const std::string& host) const;

  std::string scheme_;
  std::vector<std::string> allowed_;
  IsOwnName isOwnName_;
};

}  // namespace orvane::terminal
