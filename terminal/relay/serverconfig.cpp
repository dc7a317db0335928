#include "terminal/relay/serverconfig.h"

#include <charconv>
#include <stdexcept>

#include <fmt/format.h>

namespace orvane::terminal::relay {
namespace {

constexpr unsigned kRoutes = 2000;
constexpr unsigned kMaxPort = 65535 - kRoutes;

constexpr const char* kHead =
    R"(# Written by pocket-relay setup, which keeps the keys when it is run again with further names.
# Start in this folder: nats-server -c nats.conf. After a change: nats-server --signal reload
server_name: "{}"
listen: "{}:{}"
max_payload: 1MB
write_deadline: "5s"
ping_interval: "2s"
ping_max: 2
)";

constexpr const char* kTls = R"({0}tls {{
{0}  cert_file: "tls.crt"
{0}  key_file: "tls.key"
{0}  ca_file: "peers.crt"
{0}}}
)";

std::string userText(const ServerUser& user) {
  const bool isTerminal = user.kind == ServerUser::Kind::Terminal;
  const std::string publish = isTerminal ? fmt::format(R"("pocket.here.{0}", "pocket.down.*.*.{0}.*")", user.name)
                                         : fmt::format(R"("pocket.up.*.*.{}.*")", user.name);
  const std::string subscribe = isTerminal ? fmt::format(R"("pocket.here.{0}", "pocket.up.{0}.*.*.*")", user.name)
                                           : fmt::format(R"("pocket.here.*", "pocket.down.{}.*.*.*")", user.name);
  return fmt::format(
      "    # {0} {1}\n    {{ nkey: {2}, permissions: {{ publish: {{ allow: [{3}] }}, subscribe: {{ allow: [{4}] }} }} "
      "}}\n",
      isTerminal ? "terminal" : "relay", user.name, user.publicKey, publish, subscribe);
}

}  // namespace

bool ServerPlace::isLoopback() const { return host == "localhost" || host.starts_with("127."); }

std::string ServerPlace::url(bool hasTls) const {
  return fmt::format("{}://{}:{}", hasTls ? "tls" : "nats", host, port);
}

ServerPlace readPlace(const std::string& text) {
  const size_t colon = text.rfind(':');
  const std::string host = text.substr(0, colon);
  unsigned port = 0;
  const char* end = text.data() + text.size();
  const char* begin = colon == std::string::npos ? end : text.data() + colon + 1;
  const bool isPort = std::from_chars(begin, end, port).ptr == end && port > 0 && port <= kMaxPort;
  const bool isHost =
      !host.empty() &&
      host.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-") == std::string::npos;
  if (isPort && isHost) return {host, static_cast<uint16_t>(port)};
  throw std::runtime_error(fmt::format("the server {} must be HOST:PORT, with a port up to {}", text, kMaxPort));
}

std::string serverName(size_t index) { return fmt::format("server{}", index + 1); }

std::string writeServerConfig(const std::vector<ServerPlace>& places, size_t index,
                              const std::vector<ServerUser>& users, const std::string& secret, bool hasTls) {
  const ServerPlace& own = places[index];
  const std::string address = own.isLoopback() ? own.host : "0.0.0.0";
  std::string text = fmt::format(kHead, serverName(index), address, own.port);
  if (hasTls) text += fmt::format(kTls, "");
  text += "authorization {\n  users = [\n";
  for (const ServerUser& each : users) text += userText(each);
  text += fmt::format(
      "  ]\n}}\ncluster {{\n  name: \"pocket\"\n  listen: \"{}:{}\"\n  no_advertise: true\n"
      "  authorization {{ user: \"route\", password: \"{}\", timeout: 2 }}\n",
      address, own.port + kRoutes, secret);
  if (hasTls) text += fmt::format(kTls, "  ");
  text += "  routes = [\n";
  for (size_t i = 0; i < places.size(); ++i) {
    if (i == index) continue;
    text += fmt::format("    \"nats://route:{}@{}:{}\"\n", secret, places[i].host, places[i].port + kRoutes);
  }
  return text + "  ]\n}\n";
}

}  // namespace orvane::terminal::relay
