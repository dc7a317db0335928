#pragma once

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "terminal/client/client.h"
#include "tests/support/program.h"
#include "tests/support/tempdir.h"

namespace orvane::test {

// Three nats-servers as a cluster on an address of 127.0.0.0/8 that is this process's own, set up by pocket-relay, and
// the credentials of the relays r1 and r2 and of the terminals t1, t2, and so on.
class Cluster {
 public:
  static constexpr size_t kServers = 3;

  explicit Cluster(bool hasTls, size_t terminals = 4);

  // All servers; comma-separated.
  std::vector<std::string> urlList() const;
  std::string urls() const;
  std::filesystem::path credentials(const std::string& name) const;
  std::filesystem::path dir() const { return dir_.path(); }

  // The arguments of a terminal behind the relays, which listens nowhere.
  std::vector<std::string> terminalArguments(const std::string& name, const std::filesystem::path& dataDir) const;

  // Kills it if it is running, and starts it again.
  void restartServer(size_t index);
  Program& server(size_t index) const { return *servers_.at(index); }

 private:
  std::string place(size_t index) const;

  TempDir dir_;
  const std::string host_;
  const bool hasTls_;
  std::array<std::unique_ptr<Program>, kServers> servers_;
};

// pocket-relay on any free port.
class RelayProcess {
 public:
  RelayProcess(const Cluster& cluster, const std::string& name, uint16_t port = 0);

  uint16_t port() const { return port_; }
  Program& program() { return program_; }

 private:
  TempDir dir_;
  Program program_;
  uint16_t port_ = 0;
};

// pocket-terminal behind the relays.
class FarTerminal {
 public:
  FarTerminal(const Cluster& cluster, std::string name,
              const std::vector<std::string>& options = {"--quotes", "still"});

  const std::string& name() const { return name_; }
  const std::string& token() const { return token_; }  // with all rights
  const std::filesystem::path& dir() const { return dir_.path(); }
  Program& program() { return *program_; }

  // Kills it if it is running, and starts it again.
  void restart();

 private:
  TempDir dir_;
  const std::string name_;
  std::vector<std::string> arguments_;
  std::string token_;
  std::unique_ptr<Program> program_;
};

std::string loginFrame(const std::string& terminal, const std::string& token, const std::string& more = {});

// Logs in, and tries again for a while as long as the terminal is not there. Throws if it stays out.
std::unique_ptr<terminal::Client> loginThrough(uint16_t port, const std::string& terminal, const std::string& token,
                                               const terminal::ClientOptions& options = {});

// The close code that a refused login ends with.
uint16_t tryLogin(uint16_t port, const std::string& terminal, const std::string& token);

}  // namespace orvane::test
