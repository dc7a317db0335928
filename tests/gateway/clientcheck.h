#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/gateway/gatewaymodel.h"
#include "tests/gateway/gatewayrig.h"
#include "tests/gateway/wireclient.h"

namespace orvane::test {

// Does each thing to the gateway and to the model of it, and compares what both say. Each operation returns what it
// did, for the trace of a failure.
class ClientCheck {
 public:
  model::World& world() { return model_.world; }
  uint64_t lastPush() const { return model_.sessions.lastPush(); }

  // After the first token: learns the epoch.
  void start();
  std::string restart();

  std::string connect(const std::string& address);
  std::string hangUp(int client);
  std::string login(int client, const model::Login& login);
  std::string request(int client, const model::Request& request);
  std::string badFrame(int client);
  void push(const model::Reply& push);

  // The gateway has done what it can do now: it waits for no file.
  void settle() { rig_.settle(); }

  // The library answers one of the first `spread` + 1 requests that it has. An empty topic is the request's own.
  std::string answerOne(model::Reply reply, size_t spread);
  void answerAll();
  std::string setAgent(bool isThere);

  std::string wait(int64_t seconds);
  std::string sleep(int64_t seconds);

  std::string addToken(int rights);
  std::string revoke(int token);
  std::string expire(int token, int64_t seconds);

  // Each client got what it must, and nothing else.
  void compare();

  // /metrics and /health/ready, and audit.log.
  void comparePages();
  void compareAudit();

 private:
  struct Call {
    AgentCall got;
    int number = 0;  // the model's
  };

  void send(int client, const std::string& frame);
  void compare(int client);
  void takeCalls();
  void reachAll();
  void answerUntil(const std::function<bool()>& isDone);
  bool takeCall(std::chrono::milliseconds limit);
  void answer(size_t index, model::Reply reply);
  void deliver(int64_t id, const model::Reply& reply);
  std::string findMetricsFault();
  void compareMetrics();

  GatewayRig rig_;
  GatewayModel model_;
  std::map<int, std::unique_ptr<WireClient>> wires_;
  std::vector<Call> calls_;  // that the library has
  std::set<std::string> epochs_;
  int lastClient_ = 0;
};

}  // namespace orvane::test
