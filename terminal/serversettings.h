#pragma once

#include <CLI/App.hpp>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "terminal/tls.h"

namespace orvane::terminal {

// What the terminal and the relay have in common: a server for phones with a folder and a log.
struct ServerSettings {
  std::string address = "127.0.0.1";
  uint16_t port = 8700;
  std::optional<TlsFiles> tls;
  bool keepsOwnCertificate = false;  // the server makes the files of `tls`
  std::vector<std::string> allowedOrigins;
  std::filesystem::path dataDir;
  std::filesystem::path logFile;
  std::string logLevel = "info";
  std::chrono::milliseconds loginTime{};  // limit of the TLS handshake and the HTTP head, and again of the first frame
  std::chrono::milliseconds idleTime{};   // after which a client that is silent or reads nothing is dropped
  size_t maxBacklogBytes = 0;             // of outgoing messages, for all clients together
  size_t maxCompressionBytes = 0;         // of memory for compressing messages, for all clients together
  size_t maxConnections = 256;            // that are open at once
};

// For CLI::Validator: what is wrong with an origin such as "https://trade.example.com:8443".
std::string checkOrigin(const std::string& origin);

// The options of these settings. The object must outlive the parsing.
class ServerOptions {
 public:
  // `program` names the default folder and settings file, `log` the log in the folder.
  ServerOptions(ServerSettings& settings, std::string program, std::string log)
      : settings_(settings), program_(std::move(program)), log_(std::move(log)) {}

  // `purpose` of the folder, such as "folder of the log". Options that are added next are in the group "Files" too.
  void add(CLI::App& app, const char* purpose);

  // Fills in what follows from the arguments. Throws CLI::ValidationError. `needsKey`: the program serves.
  void complete(bool needsKey);

 private:
  void addNetwork(CLI::App& app);
  void addPhones(CLI::App& app);
  void addFiles(CLI::App& app, const char* purpose);
  void completeTls(bool needsKey);

  ServerSettings& settings_;
  const std::string program_;
  const std::string log_;
  double loginSeconds_ = 10;
  double idleSeconds_ = 36;
  size_t maxBacklog_ = 64;      // MiB
  size_t maxCompression_ = 64;  // MiB
  TlsFiles tls_;
};

}  // namespace orvane::terminal
