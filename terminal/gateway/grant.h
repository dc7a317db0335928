#pragma once

#include <string>

namespace orvane::terminal {

// What a token lets its phone do.
struct Grant {
  std::string name;  // the token's, UTF-8
  bool see = false;
  bool cancel = false;
  bool trade = false;
};

}  // namespace orvane::terminal
