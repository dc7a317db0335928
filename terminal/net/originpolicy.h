#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::terminal {

// Whether a request may be served, by what the browser says of where it comes from: a page of another site must neither
// work the terminal through a browser that can reach it, nor read it by having a name of its own lead here.
class OriginPolicy {
 public:
  // Tells a name that leads here, in lower case, beside localhost and this machine's own.
  using IsOwnName = std::function<bool(const std::string& name)>;

  // `allowed` are origins as browsers write them, "https://trade.example.com:8443". An empty `isOwnName` knows none.
  OriginPolicy(bool isSecure, const std::vector<std::string>& allowed, IsOwnName isOwnName);

  // Why a request with these headers is not served; empty where it is. `host` must be an IP address, a name that leads
  // here or the host of an allowed origin, with any port; `origin` must be empty, that very host, or allowed.
  std::string findFault(std::string_view host, std::string_view origin) const;

 private:
  bool isKnownHost(const std::string& host) const;

  std::string scheme_;
  std::vector<std::string> allowed_;
  IsOwnName isOwnName_;
};

}  // namespace orvane::terminal
