#pragma once

#include <CLI/App.hpp>
#include <filesystem>
#include <string>

namespace orvane::terminal {

inline constexpr int kUsageError = 2;

// The place of a program's files in the user's folders, as XDG_DATA_HOME and XDG_CONFIG_HOME give them; empty if the
// environment has none.
std::filesystem::path defaultDataDir(const std::string& program);
std::filesystem::path defaultConfig(const std::string& program);

// For CLI::Validator: CLI11 takes "nan" and "inf" for numbers.
std::string checkFinite(const std::string& number);

// Reads the command line and the settings file of `app`. Throws CLI::ParseError with a text that names the file if the
// error may be there.
void parseCommandLine(CLI::App& app, int argc, const char* const* argv);

}  // namespace orvane::terminal
