#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orvane::terminal::relay {

// Where a server of the cluster listens.
struct ServerPlace {
  std::string host;
  uint16_t port = 0;  // for clients; routes use the one 2000 above it

  bool isLoopback() const;
  std::string url(bool hasTls) const;
};

// Reads "HOST:PORT". Throws std::runtime_error.
ServerPlace readPlace(const std::string& text);

// A terminal or a relay, as a user of the servers.
struct ServerUser {
  enum class Kind : uint8_t { Terminal, Relay };
  Kind kind = Kind::Terminal;
  std::string name;
  std::string publicKey;
};

// "server1" is the first.
std::string serverName(size_t index);

// The configuration of one nats-server. Each user may use its own subjects alone: a terminal speaks in its own name to
// any relay, a relay in its own name to any terminal. Files are relative to the folder of the configuration.
std::string writeServerConfig(const std::vector<ServerPlace>& places, size_t index,
                              const std::vector<ServerUser>& users, const std::string& secret, bool hasTls);

}  // namespace orvane::terminal::relay
