#pragma once

#include <boost/process/child.hpp>
#include <boost/process/pipe.hpp>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "terminal/client/client.h"
#include "tests/support/tempdir.h"

namespace orvane::test {

// The built pocket-terminal with prices that do not move, on any free port. It accepts connections when the constructor
// returns. The destructor kills it if it is still running.
class TerminalProcess {
 public:
  // Makes a token unless it is given one.
  explicit TerminalProcess(const std::filesystem::path& dataDir, const std::vector<std::string>& options = {},
                           const std::string& token = {});
  ~TerminalProcess();
  TerminalProcess(const TerminalProcess&) = delete;
  TerminalProcess& operator=(const TerminalProcess&) = delete;

  uint16_t port() const { return port_; }
  const std::string& token() const { return token_; }  // with all rights
  int pid() const { return process_.id(); }

  // A client that is logged in, with token() by default, and checks each message against its schema.
  std::unique_ptr<terminal::Client> login(const std::string& token = {}) const;

  // Ends it by SIGTERM and returns its exit code; -1 if it does not end within 30 seconds, and is killed.
  int stop();

  // Ends it by SIGKILL.
  void kill();

 private:
  boost::process::ipstream output_;
  boost::process::child process_;
  uint16_t port_ = 0;
  std::string token_;
};

struct Outcome {
  int exitCode = -1;
  std::string output;
  std::string error;
};

// Runs pocket-terminal to its end.
Outcome runTerminal(const std::vector<std::string>& arguments);

// While it lives, programs started here look for no leaks: the leak sanitizer cannot trace one that has given up root.
class NoLeakCheck {
 public:
  NoLeakCheck();
  ~NoLeakCheck();
  NoLeakCheck(const NoLeakCheck&) = delete;
  NoLeakCheck& operator=(const NoLeakCheck&) = delete;

 private:
  std::string options_;
};

// Makes a token and returns its text.
std::string makeToken(const std::filesystem::path& dataDir, const std::string& name, const std::string& rights);

// A file's content.
std::string readFile(const std::filesystem::path& file);

}  // namespace orvane::test
