#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "terminal/tls.h"

namespace orvane::terminal {

// Arguments of `pocket-terminal call`.
struct CallSettings {
  std::string address;  // as given to the terminal, so it may be a wildcard address
  uint16_t port = 0;
  std::optional<TlsFiles> tls;
  std::filesystem::path dataDir;  // of the terminal
  std::string topic;
  std::string data;   // JSON text; may be empty
  std::string token;  // empty: a temporary one, made in `dataDir`
  int32_t terminalType = 8;
  bool asTable = false;
};

// Sends the request to the running terminal and prints its reply. Returns the exit code: 0; 1 for a failure reply,
// whose text goes to standard error; 2 if no reply was received, with the reason on standard error.
int runCall(const CallSettings& call);

}  // namespace orvane::terminal
