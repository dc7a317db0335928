#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/gateway/model/world.h"

namespace orvane::test::model {

// Logins and their limits, and the pushes that logged-in clients get.
class Sessions {
 public:
  explicit Sessions(World& world) : world_(world) {}

  void connect(int client, const std::string& address);
  void login(int client, const Login& login);
  void badFrame(int client, const std::string& id, const std::string& topic, const std::string& message);
  void push(const Reply& push);

  // Closes the clients whose time is over.
  void closeDue();
  void revoke(int token);
  void restart();

  uint64_t lastPush() const { return pushes_.size(); }

 private:
  void admit(int client, const Login& login, int token);
  void refuseToken(int client, const Login& login);
  bool hears(const Client& client, const std::string& topic) const;

  World& world_;
  std::vector<std::string> pushes_;                       // since the start, as frames
  std::map<std::string, std::pair<int64_t, int>> wrong_;  // by address: since, how many
};

}  // namespace orvane::test::model
