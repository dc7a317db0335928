#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane::bench {

// One request of a logged-in client, as the frames on the wire.
struct Exchange {
  std::string login;    // sent first, its answer ignored; empty if the server knows no login
  std::string request;  // empty for clients that never ask
  std::string reply;    // the only accepted answer
};

// WebSocket connections to one server on this machine. Not thread-safe; a wrong reply throws std::runtime_error.
class Clients {
 public:
  // Connects and logs in.
  Clients(uint16_t port, size_t count, const Exchange& exchange);
  ~Clients();
  Clients(const Clients&) = delete;
  Clients& operator=(const Clients&) = delete;

  // Sends `requests` in total, each client the next one as soon as it has its reply. Returns the nanoseconds until the
  // last reply is here.
  double load(size_t requests);

  // Sends requests at random moments, `perSecond` on average, until a stop is requested and all replies are here.
  void pace(double perSecond, const std::stop_token& stop);

 private:
  class Client;
  struct Shared;
  std::unique_ptr<Shared> shared_;
  std::vector<std::unique_ptr<Client>> clients_;
};

// Connects, logs in and returns the reply to one request.
std::string askOnce(uint16_t port, const std::string& login, const std::string& request);

}  // namespace orvane::bench
