#pragma once

#include <array>
#include <boost/process/child.hpp>
#include <boost/process/pipe.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "terminal/client/client.h"
#include "tests/support/tempdir.h"

namespace orvane::test {

// A program of the cluster. The destructor kills it.
class Program {
 public:
  Program(const std::string& path, const std::vector<std::string>& arguments,
          const std::filesystem::path& folder = "/");
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // The first line of its output.
  std::string readLine();

  // By a signal; the exit code once it has ended, -1 if it was killed or does not end.
  int end(int signal);
  void send(int signal);
  int pid() const { return process_.id(); }

 private:
  boost::process::ipstream output_;
  boost::process::child process_;
};

// Three nats-servers as a cluster on an address of 127.0.0.0/8 that is this process's own, set up by pocket-relay, and
// the credentials of the relays r1 and r2 and of the terminals t1, t2, and so on.
class Cluster {
 public:
  static constexpr size_t kServers = 3;

  explicit Cluster(bool hasTls, size_t terminals = 4);

  // All servers, comma-separated.
  std::string urls() const;
  std::vector<std::string> urlList() const;
  std::filesystem::path credentials(const std::string& name) const;
  std::filesystem::path dir() const { return dir_.path(); }

  void killServer(size_t index) { servers_.at(index).reset(); }
  void startServer(size_t index);
  Program& server(size_t index) { return *servers_.at(index); }
  int pidOfServer(size_t index) const { return servers_.at(index)->pid(); }

 private:
  std::string place(size_t index) const;
  std::string url(size_t index) const;

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

// pocket-terminal behind the relays, which listens nowhere.
class FarTerminal {
 public:
  FarTerminal(const Cluster& cluster, const std::string& name,
              std::vector<std::string> options = {"--quotes", "still"});

  const std::string& name() const { return name_; }
  const std::string& token() const { return token_; }  // with all rights
  Program& program() { return *program_; }

  // Starts it again, after its end.
  void restart(const Cluster& cluster);

  // Money for any number of orders of account 1. REQUIRES: it does not run.
  void giveFunds() const;

 private:
  TempDir dir_;
  const std::string name_;
  const std::vector<std::string> options_;
  std::string token_;
  std::unique_ptr<Program> program_;
};

std::string loginFrame(const std::string& terminal, const std::string& token, const std::string& more = {});

// Logs in, and tries again for a while as long as the terminal is not there. Throws if it stays out.
std::unique_ptr<terminal::Client> loginThrough(uint16_t port, const std::string& terminal, const std::string& token,
                                               const terminal::ClientOptions& options = {});

// How a login ends: the failure's text and the close code.
struct Refusal {
  std::string message;
  uint16_t code = 0;
};
Refusal tryLogin(uint16_t port, const std::string& terminal, const std::string& token);

}  // namespace orvane::test
