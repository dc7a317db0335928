#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "terminal/rights.h"
#include "terminal/tls.h"
#include "terminal/trading/tradinghost.h"

namespace orvane::terminal {

// What `pocket-terminal call` was asked.
struct CallSettings {
  std::string topic;
  std::string data;   // JSON text; may be empty
  std::string token;  // empty: one of its own, by the data folder
  int32_t terminalType = 8;
  bool asTable = false;
};

// What `pocket-terminal token` was asked.
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
  bool keepsOwnCertificate = false;  // makes the files of `tls` itself
  std::vector<std::string> allowedOrigins;
  std::filesystem::path dataDir;
  std::filesystem::path logFile;
  std::string logLevel = "info";
  std::chrono::milliseconds loginTime{};  // for TLS and the HTTP head, and again for the first frame
  std::chrono::milliseconds idleTime{};   // after which a silent client is dropped
  TradingOptions trading;
  std::optional<CallSettings> call;    // client rather than server
  std::optional<TokenSettings> token;  // the same for the tokens
};

// Reads the command line and the settings file. Where the program has nothing to do, after --help or a mistake, it has
// said so already, and `exitCode` is what to end with.
std::optional<Settings> readSettings(int argc, const char* const* argv, int& exitCode);

}  // namespace orvane::terminal
