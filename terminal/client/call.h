#pragma once

#include "terminal/settings.h"

namespace orvane::terminal {

// Sends the request in `settings.call` to the running terminal and prints its reply. Returns the exit code: 0; 1 for a
// failure reply, whose text goes to standard error; 2 if no reply was received, with the reason on standard error.
int runCall(const Settings& settings);

}  // namespace orvane::terminal
