#pragma once

#include <cstdint>
#include <string>

#include "terminal/rights.h"

namespace orvane::terminal {

// Who a client is: the token that it logged in with.
struct Visitor {
  int64_t token = 0;  // its id
  std::string name;   // the token's
  Rights rights;
};

}  // namespace orvane::terminal
