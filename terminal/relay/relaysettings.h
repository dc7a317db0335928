#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "terminal/relay/setup.h"
#include "terminal/serversettings.h"

namespace orvane::terminal::relay {

struct RelayServerSettings : ServerSettings {
  std::vector<std::string> servers;   // URLs of the cluster's servers
  std::filesystem::path credentials;  // file
  std::optional<SetupOptions> setup;  // run the command `setup`
};

// As readSettings of the terminal.
std::optional<RelayServerSettings> readRelaySettings(int argc, const char* const* argv, int& exitCode);

}  // namespace orvane::terminal::relay
