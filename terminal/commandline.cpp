#include "terminal/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>
#include <unistd.h>

namespace orvane::terminal {
namespace {

constexpr int kUsageError = 2;

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// A path in the folder that a variable names, or in the home; empty if the environment has neither.
std::filesystem::path userPlace(const char* variable, const char* belowHome, const std::string& name) {
  const std::filesystem::path folder = environment(variable);
  const std::filesystem::path home = environment("HOME");
  if (folder.is_absolute()) return folder / name;
  return home.empty() ? home : home / belowHome / name;
}

// A default file that exists but cannot be read is an error. CLI11 ignores it.
void requireReadable(const std::string& config) {
  if (access(config.c_str(), F_OK) != 0 || access(config.c_str(), R_OK) == 0) return;
  throw CLI::FileError(fmt::format("cannot read the settings file {}: {}", config, std::strerror(errno)));
}

// CLI11 says "INI was not able to parse KEY", or "KEY: This option is not allowed ..."; a section's key ends in ".++".
std::string unknownKey(const CLI::ConfigError& error) {
  constexpr std::string_view kPrefix = "INI was not able to parse ";
  const std::string text = error.what();
  const size_t begin = text.starts_with(kPrefix) ? kPrefix.size() : 0;
  return text.substr(begin, std::min(text.find(".++"), text.find(": ")) - begin);
}

// CLI11 does not report whether a wrong value was typed or is in the settings file.
void nameSettingsFile(const CLI::App& app, const CLI::ParseError& error) {
  const auto file = app.get_config_ptr()->as<std::string>();
  if (error.get_exit_code() == 0 || access(file.c_str(), F_OK) != 0) return;
  throw CLI::ValidationError(fmt::format("{} (the settings file {} is read too)", error.what(), file));
}

void parse(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ConfigError& error) {
    throw CLI::ConfigError(
        fmt::format("the settings file {}: {} is not a setting; each is a long option of --help, "
                    "without the dashes",
                    app.get_config_ptr()->as<std::string>(), unknownKey(error)));
  } catch (const CLI::FileError& error) {
    throw CLI::FileError(fmt::format("the settings file {}", error.what()));
  } catch (const CLI::ParseError& error) {
    nameSettingsFile(app, error);
    throw;
  }
  requireReadable(app.get_config_ptr()->as<std::string>());
}

}  // namespace

std::filesystem::path defaultDataDir(const std::string& program) {
  return userPlace("XDG_DATA_HOME", ".local/share", program);
}

std::filesystem::path defaultConfig(const std::string& program) {
  return userPlace("XDG_CONFIG_HOME", ".config", program + ".toml");
}

std::string checkFinite(const std::string& number) {
  return number.find_first_not_of("0123456789.eE+-") == std::string::npos ? "" : number + " is not a number";
}

bool parseCommandLine(CLI::App& app, int argc, const char* const* argv, int& exitCode,
                      const std::function<void()>& complete) {
  app.require_subcommand(0, 1);
  try {
    parse(app, argc, argv);
    complete();
    return true;
  } catch (const CLI::ParseError& error) {
    exitCode = app.exit(error) == 0 ? EXIT_SUCCESS : kUsageError;
    return false;
  }
}

}  // namespace orvane::terminal
