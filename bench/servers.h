#pragma once

#include <boost/process/child.hpp>
#include <boost/process/pipe.hpp>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "bench/clients.h"
#include "tests/system/terminalprocess.h"

namespace orvane::bench {

// Nanoseconds, of all threads of a process since its start.
double processorTime(int pid);

// A server in a separate process, whose first line of output names its port. Killed with the object.
class Server {
 public:
  // Returns once that line is here. Throws std::runtime_error if the line is another.
  Server(const std::filesystem::path& program, const std::vector<std::string>& arguments);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  uint16_t port() const { return port_; }
  double residentBytes() const;
  double processorTime() const { return bench::processorTime(process_.id()); }

 private:
  boost::process::ipstream output_;
  boost::process::child process_;
  uint16_t port_ = 0;
};

// A data folder for the built pocket-terminal, with one token.
class Desk {
 public:
  // With the accounts of makePaperDesk for so many rows; 0 for the sample data alone.
  explicit Desk(size_t rows = 0);

  const std::filesystem::path& folder() const { return folder_.path(); }
  const std::string& login() const { return login_; }  // frame of a client with all rights

  // Starts the terminal; `quotes` is the value of its option --quotes.
  Server start(std::string_view quotes) const;

 private:
  test::TempDir folder_;
  std::string login_;
};

// A request and the terminal's reply to it; `body` is JSON text. Throws std::runtime_error if the reply is a failure.
Exchange exchangeWith(const Server& terminal, const std::string& login, std::string_view topic, std::string_view body);

// One request, and clients that send it to a terminal and to a bare server that gives the same reply.
class ServerPair {
 public:
  // Starts the bare server; `body` is JSON text. The terminal must outlive the pair.
  ServerPair(const Desk& desk, const Server& terminal, std::string_view topic, std::string_view body);

  Clients terminalClients(size_t count) const { return {terminal_.port(), count, exchange_}; }
  Clients bareClients(size_t count) const { return {bare_.port(), count, {"", exchange_.request, exchange_.reply}}; }

 private:
  const Server& terminal_;
  Exchange exchange_;
  Server bare_;
};

// Starts a server that answers everything with `reply`, which is passed by a file in `folder`.
Server startBareServer(const std::filesystem::path& folder, const std::string& reply);

}  // namespace orvane::bench
