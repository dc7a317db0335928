#pragma once

#include "terminal/settings.h"

namespace orvane::terminal {

// Sends the request that `settings.call` holds to the running terminal and prints its reply. Returns the exit code: 0;
// 1 for a failure reply, its text on standard error; 2 when the terminal cannot be asked, standard error says why.
int runCall(const Settings& settings);

}  // namespace orvane::terminal
