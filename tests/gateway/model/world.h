#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane::test::model {

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
  size_t noticing = 0;            // those of the waiting requests that may cause notices
  int64_t noticesUntil = 0;       // when their time ends that began with the last reply
  std::deque<std::string> inbox;  // frames that it must get, in order
  uint16_t closeCode = 0;         // comes behind them, if not 0
  std::string closeReason = {};
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

// Of the library: to a request, or a push.
struct Reply {
  std::string topic;
  std::string message;
  std::string data;  // JSON, empty: none
  std::string text;  // in place of data that is not JSON
};

// What all parts of the model share. The test adds tokens, numbered from 0; the epoch is the gateway's own. Time is in
// whole seconds of the wall clock, and ids and bodies are JSON texts.
struct World {
  int64_t now = 0;
  std::map<int, Token> tokens;
  std::map<int, Client> clients;  // by the test's numbers; closed ones stay until the test has seen it
  std::string epoch;
  bool hasAgent = true;
  std::map<std::string, double> counts;  // of /metrics, since the start

  bool isOpen(int client) const;

  // Does nothing if the client is closed.
  void close(int client, uint16_t code, const std::string& reason);

  void refuse(int client, const std::string& reason, const std::string& id, const std::string& topic,
              const std::string& message);
};

inline constexpr const char* kNoLogin = "the first message must be a login";

// The right that a topic needs.
Right rightFor(const std::string& topic);
bool isAction(const std::string& topic);

std::vector<std::string> namesOf(int rights);

// The topic as a label of /metrics.
std::string label(const std::string& topic);

// JSON text: a string, and what may be missing.
std::string quoted(const std::string& text);
std::string orNull(const std::string& json);

// A frame of the gateway. `head` is "id" or "seq" with its value.
std::string frame(const std::string& head, const Reply& reply);
std::string answer(const std::string& id, const Reply& reply);

}  // namespace orvane::test::model
