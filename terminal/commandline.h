#pragma once

#include <CLI/App.hpp>
#include <filesystem>
#include <functional>
#include <string>

namespace orvane::terminal {

// The place of a program's files in the user's folders, as XDG_DATA_HOME and XDG_CONFIG_HOME give them; empty if the
// environment has none.
std::filesystem::path defaultDataDir(const std::string& program);
std::filesystem::path defaultConfig(const std::string& program);

// For CLI::Validator: CLI11 takes "nan" and "inf" for numbers.
std::string checkFinite(const std::string& number);

// Reads the command line and the settings file of `app`, of at most one command, then calls `complete`, which may throw
// CLI::ParseError. False if the program ends with `exitCode`, after a help text or a message that names the settings
// file if the error may be there.
bool parseCommandLine(CLI::App& app, int argc, const char* const* argv, int& exitCode,
                      const std::function<void()>& complete);

}  // namespace orvane::terminal
