#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "terminal/client/call.h"
#include "terminal/phones/auditlog.h"
#include "terminal/rights.h"
#include "terminal/serversettings.h"
#include "terminal/trading/tradingoptions.h"

namespace orvane::terminal {

// Arguments of `pocket-terminal token`.
struct TokenSettings {
  enum class Task : uint8_t { Add, List, Revoke };
  Task task = Task::List;
  std::string name;
  Rights rights;
};

// Phones come in through relays too.
struct RelaySettings {
  std::vector<std::string> urls;      // of the cluster's servers
  std::string name;                   // of this terminal
  std::filesystem::path credentials;  // file
};

struct Settings : ServerSettings {
  AuditLimits audit;
  int64_t gatewayBytes = 0;  // size of gateway.db above which requests with a key are refused
  TradingOptions trading;
  std::optional<RelaySettings> relay;
  bool listens = true;                 // takes direct connections
  std::optional<CallSettings> call;    // run as a client
  std::optional<TokenSettings> token;  // run the command `token`
};

// Reads the command line and the settings file. Returns nothing if the program must end, after --help or an error. The
// text has then been printed, and `exitCode` is set.
std::optional<Settings> readSettings(int argc, const char* const* argv, int& exitCode);

}  // namespace orvane::terminal
