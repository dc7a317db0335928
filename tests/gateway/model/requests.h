#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/gateway/model/audit.h"
#include "tests/gateway/model/world.h"

namespace orvane::test::model {

// Requests from their frame to their reply: rights, limits, keys, and what the library may get.
class Requests {
 public:
  Requests(World& world, Audit& audit) : world_(world), audit_(audit) {}

  void request(int client, const Request& request);

  // The library got a request. Returns its number, or nothing if it must not get it, or not yet.
  std::optional<int> called(int32_t terminalType, const std::string& topic, const std::string& data);
  void reply(int number, const Reply& reply);

  void forgetKeys();
  void restart();

  size_t countWaiting() const;  // requests without a reply
  bool hasCall() const;         // one of them has not reached the library

 private:
  struct Waiter {
    int client = 0;
    std::string id;
  };
  struct Running {
    int client = 0;
    int token = 0;
    Request request;
    std::vector<Waiter> waiters;
    bool isCalled = false;
    int64_t since = 0;
    std::string auditHead;
  };
  struct Key {
    std::string print;  // of the request
    int64_t since = 0;
    int number = 0;  // of the running request; 0 if none
    std::optional<Reply> reply;
  };

  bool passesGates(int client, const Request& request);
  bool passesKey(int client, const Request& request);
  bool refuse(int client, const Request& request, const char* reason, std::string_view message);
  void end(Client& client, const std::string& topic);
  bool isWanted(const Running& running) const;
  size_t waitingBytes(int token) const;
  bool hasPlace(bool isForAction) const;

  World& world_;
  Audit& audit_;
  std::map<int, Running> running_;  // by number, which is their order
  int lastNumber_ = 0;
  std::map<std::pair<int, std::string>, Key> keys_;  // by token and key
};

}  // namespace orvane::test::model
