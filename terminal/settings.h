#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "terminal/gateway/session.h"
#include "terminal/tls.h"
#include "terminal/trading/tradinghost.h"

namespace orvane::terminal {

// What `pocket-terminal call` was asked.
struct CallSettings {
  std::string topic;
  std::string data;   // JSON text; may be empty
  std::string token;  // empty: the one in the data folder
  int32_t terminalType = 8;
  bool asTable = false;
};

struct Settings {
  std::string address = "127.0.0.1";
  uint16_t port = 8700;
  std::optional<TlsFiles> tls;
  bool keepsOwnCertificate = false;  // makes the files of `tls` itself
  std::vector<std::string> allowedOrigins;
  std::filesystem::path dataDir;
  std::filesystem::path logFile;
  std::string logLevel = "info";
  SessionLimits limits;
  TradingOptions trading;
  std::optional<CallSettings> call;  // client rather than server
};

// Reads the command line. Where the program has nothing to do, after --help or a mistake, it has said so already, and
// `exitCode` is what to end with.
std::optional<Settings> readSettings(int argc, const char* const* argv, int& exitCode);

}  // namespace orvane::terminal
