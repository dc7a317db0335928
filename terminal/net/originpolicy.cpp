#include "terminal/net/originpolicy.h"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/host_name.hpp>
#include <utility>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}

// "[::1]:8700" gives "::1".
std::string withoutPort(std::string_view host) {
  if (host.starts_with('[')) return std::string(host.substr(1, host.find(']') - 1));
  return std::string(host.substr(0, host.find(':')));
}

std::string hostOf(const std::string& origin) {
  return withoutPort(std::string_view(origin).substr(origin.find("//") + 2));
}

bool isAddress(const std::string& text) {
  boost::system::error_code error;
  boost::asio::ip::make_address(text, error);
  return !error;
}

bool isMachineName(const std::string& name) {
  boost::system::error_code error;
  const std::string own = lowerCase(boost::asio::ip::host_name(error));
  return name == "localhost" || (!error && (name == own || name == own + ".local"));
}

}  // namespace

OriginPolicy::OriginPolicy(bool isSecure, const std::vector<std::string>& allowed, IsOwnName isOwnName)
    : scheme_(isSecure ? "https://" : "http://"), isOwnName_(std::move(isOwnName)) {
  for (const std::string& origin : allowed) allowed_.push_back(lowerCase(origin));
}

std::string OriginPolicy::findFault(std::string_view host, std::string_view origin) const {
  const std::string lowerHost = lowerCase(host);
  const std::string lowerOrigin = lowerCase(origin);
  if (!isKnownHost(withoutPort(lowerHost))) {
    return fmt::format(
        "This terminal does not answer to the name \"{}\". If it should, start it with --allow-origin.\n", host);
  }
  if (origin.empty() || lowerOrigin == scheme_ + lowerHost) return {};
  if (std::find(allowed_.begin(), allowed_.end(), lowerOrigin) != allowed_.end()) return {};
  return fmt::format("Pages of {} may not use this terminal. If they should, start it with --allow-origin.\n", origin);
}

bool OriginPolicy::isKnownHost(const std::string& host) const {
  if (isAddress(host) || isMachineName(host) || (isOwnName_ && isOwnName_(host))) return true;
  return std::any_of(allowed_.begin(), allowed_.end(), [&](const auto& origin) { return hostOf(origin) == host; });
}

}  // namespace orvane::terminal
