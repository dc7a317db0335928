#pragma once

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "terminal/client/client.h"
#include "tests/support/program.h"
#include "tests/support/tempdir.h"

namespace orvane::test {

// The built pocket-terminal with prices that do not move, on any free port. It accepts connections when the constructor
// returns.
class TerminalProcess {
 public:
  // Makes a token unless it is given one.
  explicit TerminalProcess(const std::filesystem::path& dataDir, const std::vector<std::string>& options = {},
                           const std::string& token = {});

  const std::filesystem::path& dir() const { return dir_; }
  uint16_t port() const { return port_; }
  const std::string& token() const { return token_; }  // with all rights
  Program& program() { return program_; }
  int stop() { return program_.end(SIGTERM); }

  // A client that is logged in, with token() by default, and checks each message against its schema.
  std::unique_ptr<terminal::Client> login(const std::string& token = {}) const;

  // Runs a command of pocket-terminal on its folder.
  Outcome run(std::vector<std::string> arguments) const;
  // Makes a token and returns its text.
  std::string makeToken(const std::string& name, const std::string& rights) const;
  // What it has logged.
  std::string log() const;
  // What /health/ready reports.
  bool isReady() const;

 private:
  const std::filesystem::path dir_;
  Program program_;
  uint16_t port_ = 0;
  std::string token_;
};

// A terminal with its own new folder.
class FreshTerminal : private TempDir, public TerminalProcess {
 public:
  explicit FreshTerminal(const std::vector<std::string>& options = {}) : TerminalProcess(path(), options) {}
};

// Runs pocket-terminal to its end.
Outcome runTerminal(const std::vector<std::string>& arguments);

// Makes a token and returns its text.
std::string makeToken(const std::filesystem::path& dataDir, const std::string& name, const std::string& rights);

// A file's content.
std::string readFile(const std::filesystem::path& file);

}  // namespace orvane::test
