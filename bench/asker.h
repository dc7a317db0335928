#pragma once

#include "bench/clients.h"

namespace orvane::bench {

// One client that waits for each reply and then for 0.2 ms, so that the server is asleep when the next request arrives.
struct Asker {
  Clients client;
  Clients others;

  // The value at `part` of the round trips' order, in nanoseconds. If `isBusy`, the others send 200 requests a second.
  double measure(double part, bool isBusy);
};

}  // namespace orvane::bench
