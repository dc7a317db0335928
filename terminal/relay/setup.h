#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvane::terminal::relay {

struct SetupOptions {
  std::filesystem::path dir;
  std::vector<std::string> terminals;
  std::vector<std::string> relays{"relay1"};
  std::vector<std::string> servers{"127.0.0.1:4222", "127.0.0.1:4223", "127.0.0.1:4224"};  // HOST:PORT
  bool wantsTls = false;  // also if all servers are on loopback
  std::string page;       // the address that phones open; empty for that of an earlier run
};

// Writes a folder for each server with its configuration, and a file of credentials for each terminal and relay, all
// for the owner alone. Terminals, relays and keys of an earlier run are kept. Beyond loopback the servers have TLS,
// with certificates that only these credentials trust. Throws std::runtime_error.
void setUpCluster(const SetupOptions& options);

}  // namespace orvane::terminal::relay
