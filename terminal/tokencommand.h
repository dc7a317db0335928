#pragma once

#include <string>

#include <SQLiteCpp/Database.h>

#include "terminal/settings.h"

namespace orvane::terminal {

// Makes, lists or revokes what `settings.token` says, beside a running terminal or without one. Returns the exit code:
// 0, or 1 where it could not be done, and standard error says why.
int runToken(const Settings& settings);

// Notes where phones find the terminal that starts now, and prints its link: with a token that may do everything at the
// very first start, otherwise with how to make one. Throws std::runtime_error.
void printLink(const Settings& settings, const std::string& url);

}  // namespace orvane::terminal
