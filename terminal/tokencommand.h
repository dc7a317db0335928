#pragma once

#include <string>

#include "terminal/settings.h"

namespace orvane::terminal {

// Runs the command in `settings.token`, with or without a running terminal. Returns the exit code: 0, or 1 with the
// reason on standard error.
int runToken(const Settings& settings);

// Prints the starting terminal's link. The link of the very first start contains a token with all rights; later starts,
// and those that cannot write, print how to make a token.
void printLink(const Settings& settings, const std::string& link);

}  // namespace orvane::terminal
