#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orvane::bench {

// Many WebSocket connections to one server on this machine, which ask as soon as they are answered.
class Phones {
 public:
  // Connects; sends `login` and waits for its answer, unless it is empty. `reply` is what each request must be
  // answered.
  Phones(uint16_t port, size_t count, const std::string& login, std::string request, std::string reply);
  ~Phones();
  Phones(const Phones&) = delete;
  Phones& operator=(const Phones&) = delete;

  // Replies per second, over so many requests.
  double load(size_t requests);

 private:
  class Phone;
  struct Shared;
  std::unique_ptr<Shared> shared_;
  std::vector<std::unique_ptr<Phone>> phones_;
};

// Answers every message with `reply`; prints its port, and runs until the process is ended.
void runEchoServer(const std::string& reply);

}  // namespace orvane::bench
