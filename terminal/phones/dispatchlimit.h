#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "terminal/eventloop.h"

namespace orvane::terminal {

// What the agent has not answered, and how much more it may get. The agent runs one request after the other, so what it
// has delays all that comes: few lists, fewer of a token that is not alone, and as many actions as may share a flush of
// the disk. One thread.
class DispatchLimit {
 public:
  struct Request {
    int64_t token = 0;
    size_t bytes = 0;
    bool isAction = false;
    bool isAlone = false;  // no other token has clients whom it could delay
  };

  bool mayAdd(const Request& request) const;
  void add(int64_t requestId, const Request& request, BootTime now);

  // Does nothing if the agent does not have the request.
  void remove(int64_t requestId);

  // Requests of the token.
  size_t count(int64_t token) const;

  // Age of the oldest request; 0 without one.
  BootTime oldestAge(BootTime now) const;

 private:
  struct Entry {
    Request request;
    BootTime since{};
  };
  struct Count {
    size_t actions = 0;
    size_t lists = 0;

    size_t& of(const Request& request) { return request.isAction ? actions : lists; }
  };

  std::unordered_map<int64_t, Entry> requests_;
  std::unordered_map<int64_t, Count> ofToken_;  // none is zero
  Count all_;
  size_t bytes_ = 0;
};

}  // namespace orvane::terminal
