#pragma once

#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::test {

// What each client of the gateway may know and do, written from docs/gateway.md alone: it shares no code with the
// terminal. Each operation is an event at the gateway, and adds what the clients must get to their inboxes, what must
// be in the audit, and what /metrics must count. Time is in whole seconds, and ids and bodies are JSON texts.
class GatewayModel {
 public:
  enum Right { kSee = 1, kCancel = 2, kTrade = 4 };

  struct Token {
    std::string name;
    std::string text;
    int rights = 0;
    bool isValid = true;
    std::optional<int64_t> expires;
  };
  struct Client {
    std::string address;
    int token = -1;  // -1 before the login
    std::string device;
    bool isPunished = false;        // for a wrong token
    std::optional<int64_t> due;     // when the gateway closes it, unless it logs in
    std::string loginId = "null";   // of the wrong login
    size_t waiting = 0;             // requests without a reply
    size_t refused = 0;             // for too many waiting requests, since fewer than 512 waited
    std::deque<std::string> inbox;  // frames that it must get, in order
    uint16_t closeCode = 0;         // comes behind them, if not 0
  };
  struct Login {
    std::string id;
    std::string token;
    std::string device;
    std::optional<std::pair<std::string, uint64_t>> resume;  // epoch and number
  };
  struct Request {
    std::string id;
    int32_t terminalType = 8;
    std::string topic;
    std::string data;       // empty: none
    std::string key;        // empty: none
    std::string bodyFault;  // why the gateway refuses the body; empty: it does not
  };
  struct Reply {
    std::string topic;
    std::string message;
    std::string data;  // JSON, empty: none
    std::string text;  // in place of data that is not JSON
  };

  // The state. The test adds tokens, numbered from 0; the epoch is the gateway's own.
  int64_t now = 0;
  std::map<int, Token> tokens;
  std::map<int, Client>
      clients;  // by the test's numbers; those that the gateway closes stay until the test has seen it
  std::string epoch;
  bool hasAgent = true;

  void connect(int client, const std::string& address);
  void hangUp(int client);
  void login(int client, const Login& login);
  void request(int client, const Request& request);
  void badFrame(int client, const std::string& id, const std::string& topic, const std::string& message);
  void push(const std::string& topic, const std::string& data);

  // The library got a request. Returns its number, or nothing if it must not get it, or not yet.
  std::optional<int> called(int32_t terminalType, const std::string& topic, const std::string& data);
  void reply(int number, const Reply& reply);

  // Time has passed; timers ran when they were due, or all of them at the end.
  void advance(int64_t seconds);
  void revoke(int token);
  void restart();

  bool isOpen(int client) const { return clients.at(client).closeCode == 0; }
  size_t countLoggedIn() const;
  size_t countWaiting() const;  // requests without a reply
  bool hasCall() const;         // one of them has not reached the library
  uint64_t lastPush() const { return pushes_.size(); }

  // The lines of audit.log without their times, in any order, and the values of /metrics by name.
  const std::multiset<std::string>& audit() const { return audit_; }
  std::map<std::string, double> metrics() const;

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
    bool isWanted = true;  // false once nobody waits for a list
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

  void close(int client, uint16_t code);
  void drop(int client);
  void refuse(int client, const std::string& reason, const std::string& id, const std::string& topic,
              const std::string& message);
  void admit(int client, const Login& login, int token);
  void wrongToken(int client, const Login& login);
  bool passesKey(int client, const Request& request);
  void refuseCrowd(int client, const Request& request);
  std::string auditHead(int client, const Request& request) const;

  std::vector<std::string> pushes_;  // since the start, as frames
  std::map<int, Running> running_;   // by number, which is their order
  int lastNumber_ = 0;
  std::map<std::pair<int, std::string>, Key> keys_;       // by token and key
  std::map<std::string, std::pair<int64_t, int>> wrong_;  // by address: since, how many
  std::multiset<std::string> audit_;
  std::map<std::string, double> counts_;  // of /metrics
};

}  // namespace orvane::test
