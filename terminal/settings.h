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
#include "terminal/tls.h"
#include "terminal/trading/tradingoptions.h"

namespace orvane::terminal {

// Arguments of `pocket-terminal token`.
struct TokenSettings {
  enum class Task : uint8_t { Add, List, Revoke };
  Task task = Task::List;
  std::string name;
  Rights rights;
};

struct Settings {
  std::string address = "127.0.0.1";
  uint16_t port = 8700;
  std::optional<TlsFiles> tls;
  bool keepsOwnCertificate = false;  // the terminal makes the files of `tls`
  std::vector<std::string> allowedOrigins;
  std::filesystem::path dataDir;
  std::filesystem::path logFile;
  std::string logLevel = "info";
  std::chrono::milliseconds loginTime{};  // limit of the TLS handshake and the HTTP head, and again of the first frame
  std::chrono::milliseconds idleTime{};   // after which a client that is silent or reads nothing is dropped
  size_t maxBacklogBytes = 0;             // of outgoing messages, for all clients together
  AuditLimits audit;
  int64_t gatewayBytes = 0;  // size of gateway.db above which requests with a key are refused
  TradingOptions trading;
  std::optional<CallSettings> call;    // run as a client
  std::optional<TokenSettings> token;  // run the command `token`
};

// Reads the command line and the settings file. Returns nothing if the program must end, after --help or an error. The
// text has then been printed, and `exitCode` is set.
std::optional<Settings> readSettings(int argc, const char* const* argv, int& exitCode);

}  // namespace orvane::terminal
