#include "terminal/settings.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>
#include <unistd.h>

#include "terminal/certificate.h"
#include "terminal/json.h"

namespace orvane::terminal {
namespace {

constexpr int kUsageError = 2;
constexpr int64_t kMebibyte = int64_t{1} << 20;
constexpr const char* kMoreOptions = "\nThe terminal's own options, such as --data, may be given here too.";

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// A path in the folder that a variable names, or in the home; empty if the environment has neither.
std::filesystem::path userPlace(const char* variable, const char* belowHome, const char* name) {
  const std::filesystem::path folder = environment(variable);
  const std::filesystem::path home = environment("HOME");
  if (folder.is_absolute()) return folder / name;
  return home.empty() ? home : home / belowHome / name;
}

std::filesystem::path defaultDataDir() { return userPlace("XDG_DATA_HOME", ".local/share", "pocket-terminal"); }
std::filesystem::path defaultConfig() { return userPlace("XDG_CONFIG_HOME", ".config", "pocket-terminal.toml"); }

std::string checkData(const std::string& data) {
  const JsonResult result = checkJson(data);
  return result.ok ? "" : "not JSON: " + result.message;
}

std::string checkRights(const std::string& list) {
  try {
    Rights::read(list);
    return {};
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

std::string checkFinite(const std::string& number) {
  return number.find_first_not_of("0123456789.eE+-") == std::string::npos ? "" : number + " is not a number";
}

std::string checkUnsigned(const std::string& number) { return number.starts_with('-') ? number + " is below 0" : ""; }

// Values of options that need more than a conversion.
struct Arguments {
  std::string quotes = "walk";
  double loginSeconds = 10;
  double idleSeconds = 36;
  size_t maxBacklog = 64;  // MiB
  int auditMebibytes = 64;
  int gatewayMebibytes = 1024;
  TlsFiles tls;
  CallSettings call;
  bool json = false;
  TokenSettings token;
  std::string rights;
};

std::string checkAddress(const std::string& text) {
  boost::system::error_code error;
  boost::asio::ip::make_address(text, error);
  return error ? text + " is not an IP address" : "";
}

std::string checkOrigin(const std::string& origin) {
  const size_t host = origin.starts_with("https://") ? 8 : origin.starts_with("http://") ? 7 : origin.size();
  const bool isOrigin = host < origin.size() && origin.find_first_of("/?#@ ", host) == std::string::npos;
  return isOrigin ? "" : origin + " is not an origin such as https://trade.example.com:8443";
}

void addNetworkOptions(CLI::App& app, Settings& settings, Arguments& typed) {
  app.option_defaults()->group("Network");
  app.add_option("--listen", settings.address, "IP address to listen on; beyond loopback TLS is required")
      ->check(CLI::Validator(checkAddress, "ADDRESS"))
      ->capture_default_str();
  app.add_option("--port", settings.port, "port; 0 is any free one")->capture_default_str();
  CLI::Option* own = app.add_flag("--tls-self", settings.keepsOwnCertificate,
                                  "TLS with a self-signed certificate, made and kept in the data folder");
  CLI::Option* certificate =
      app.add_option("--tls-cert", typed.tls.certificate, "TLS with the certificate of this file (PEM)")->excludes(own);
  app.add_option("--tls-key", typed.tls.key, "the key of --tls-cert (PEM)")->needs(certificate);
  app.add_option("--allow-origin", settings.allowedOrigins, "further origin whose pages may use the terminal")
      ->check(CLI::Validator(checkOrigin, "ORIGIN"));
}

void addPhoneOptions(CLI::App& app, Arguments& typed) {
  app.option_defaults()->group("Phones");
  app.add_option("--login-timeout", typed.loginSeconds, "seconds within which a phone must log in")
      ->check(CLI::Validator(checkFinite, "SECONDS") & CLI::Range(0.01, 3600.0))
      ->capture_default_str();
  app.add_option("--idle-timeout", typed.idleSeconds,
                 "seconds after which a phone that is silent or reads nothing is dropped")
      ->check(CLI::Validator(checkFinite, "SECONDS") & CLI::Range(0.01, 3600.0))
      ->capture_default_str();
  app.add_option("--max-backlog", typed.maxBacklog, "MiB of unsent messages, for all phones together")
      ->check(CLI::Range(1, 65536))
      ->capture_default_str();
}

void addFileOptions(CLI::App& app, Settings& settings, Arguments& typed) {
  app.option_defaults()->group("Files");
  app.set_config("--config", defaultConfig().string(), "settings file; its keys are these options without the dashes")
      ->group("Files");
  app.allow_config_extras(CLI::config_extras_mode::error);
  app.add_option("--data", settings.dataDir, "folder of the databases, the audit and the log")
      ->default_str(defaultDataDir().string());
  app.add_option("--audit-size", typed.auditMebibytes, "MiB at which audit.log becomes audit.log.1, and so on")
      ->check(CLI::Range(1, 65536))
      ->capture_default_str();
  app.add_option("--audit-files", settings.audit.oldFiles, "how many rotated audit files are kept")
      ->check(CLI::Range(0, 10000))
      ->capture_default_str();
  app.add_option("--gateway-size", typed.gatewayMebibytes,
                 "MiB of gateway.db above which requests with a key are refused")
      ->check(CLI::Range(1, 1048576))
      ->capture_default_str();
  app.add_option("--log", settings.logFile, "log file")->default_str("terminal.log in the data folder");
  app.add_option("--log-level", settings.logLevel, "lowest level that is logged")
      ->check(CLI::IsMember({"trace", "debug", "info", "warn", "error", "off"}))
      ->capture_default_str();
}

void addTradingOptions(CLI::App& app, Settings& settings, Arguments& typed) {
  app.option_defaults()->group("Trading");
  app.add_option("--quotes", typed.quotes, "walk, still, or a CSV file of quotes to replay")->capture_default_str();
  app.add_option("--seed", settings.trading.seed, "start of the random walk")
      ->check(CLI::Validator(checkUnsigned, "UINT"))
      ->capture_default_str();
}

CLI::App& addCall(CLI::App& app, Arguments& typed) {
  CLI::App& call = *app.add_subcommand("call", "send one request to a running terminal, and print the reply");
  call.fallthrough();
  call.footer(kMoreOptions);
  call.option_defaults()->group("Options")->configurable(false);
  call.add_option("TOPIC", typed.call.topic, "such as account.list")->required();
  call.add_option("DATA", typed.call.data, "the request's body, such as '[0, 3]'")
      ->check(CLI::Validator(checkData, "JSON"));
  call.add_option("--token", typed.call.token, "token; the default is one made for this call in the data folder")
      ->envname("POCKET_TOKEN");
  call.add_option("--terminal-type", typed.call.terminalType, "terminal type of the request")->capture_default_str();
  CLI::Option* json = call.add_flag("--json", typed.json, "print the bytes as received");
  call.add_flag("--table", typed.call.asTable, "print a list as a table, the default on a screen")->excludes(json);
  return call;
}

CLI::App& addToken(CLI::App& app, Arguments& typed) {
  using Task = TokenSettings::Task;
  CLI::App& token = *app.add_subcommand("token", "make, list and revoke the tokens that clients log in with");
  token.fallthrough();
  token.require_subcommand(1);
  token.option_defaults()->group("Options")->configurable(false);
  const auto addTask = [&](const char* name, const char* help, Task task) {
    CLI::App* sub = token.add_subcommand(name, help);
    sub->fallthrough();
    sub->footer(kMoreOptions);
    sub->callback([&typed, task] { typed.token.task = task; });
    return sub;
  };
  CLI::App* add = addTask("add", "make a token and print it, only this once, with a link", Task::Add);
  add->add_option("NAME", typed.token.name, "name, such as that of the phone")->required();
  add->add_option("--rights", typed.rights, "one or more of see,cancel,trade")
      ->required()
      ->check(CLI::Validator(checkRights, "LIST"));
  addTask("list", "print a table of the tokens", Task::List);
  CLI::App* revoke =
      addTask("revoke", "revoke a token; once it returns, no further request of it begins", Task::Revoke);
  revoke->add_option("NAME", typed.token.name, "the token's name")->required();
  return token;
}

void setQuotes(TradingOptions& trading, const std::string& quotes) {
  const bool walk = quotes == "walk";
  const bool still = quotes == "still";
  trading.quotes = walk ? QuoteMode::Walk : still ? QuoteMode::Still : QuoteMode::Replay;
  if (!walk && !still) trading.quoteFile = quotes;
}

std::chrono::milliseconds milliseconds(double seconds) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

void setTls(Settings& settings, const TlsFiles& typed, bool isCall) {
  if (settings.keepsOwnCertificate) settings.tls = ownTlsFiles(settings.dataDir);
  if (typed.certificate.empty()) return;
  if (!isCall && typed.key.empty()) throw CLI::ValidationError("--tls-cert", "its key is missing: add --tls-key");
  settings.tls = typed;
}

// Fills in what follows from the arguments.
void complete(Settings& settings, const Arguments& typed, bool isCall, bool isToken) {
  if (settings.dataDir.empty()) settings.dataDir = defaultDataDir();
  if (settings.dataDir.empty()) throw CLI::ValidationError("--data", "name a folder: the environment has no HOME");
  if (settings.logFile.empty()) settings.logFile = settings.dataDir / "terminal.log";
  settings.loginTime = milliseconds(typed.loginSeconds);
  settings.idleTime = milliseconds(typed.idleSeconds);
  settings.maxBacklogBytes = typed.maxBacklog * 1024 * 1024;
  settings.audit.fileBytes = kMebibyte * typed.auditMebibytes;
  settings.gatewayBytes = kMebibyte * typed.gatewayMebibytes;
  settings.trading.dataDir = settings.dataDir;
  setQuotes(settings.trading, typed.quotes);
  setTls(settings, typed.tls, isCall);
  if (isToken) {
    settings.token = typed.token;
    if (!typed.rights.empty()) settings.token->rights = Rights::read(typed.rights);
  }
  if (!isCall) return;
  settings.call = typed.call;
  settings.call->address = settings.address;
  settings.call->port = settings.port;
  settings.call->tls = settings.tls;
  settings.call->dataDir = settings.dataDir;
  settings.call->asTable = typed.call.asTable || (!typed.json && isatty(STDOUT_FILENO) == 1);
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

std::optional<Settings> readSettings(int argc, const char* const* argv, int& exitCode) {
  Settings settings;
  Arguments typed;
  CLI::App app("A paper-trading terminal that phones can see and work.", "pocket-terminal");
  app.set_version_flag("--version", "pocket-terminal " POCKETAGENT_VERSION);
  addNetworkOptions(app, settings, typed);
  addPhoneOptions(app, typed);
  addFileOptions(app, settings, typed);
  addTradingOptions(app, settings, typed);
  const CLI::App& call = addCall(app, typed);
  const CLI::App& token = addToken(app, typed);
  app.require_subcommand(0, 1);
  try {
    parse(app, argc, argv);
    complete(settings, typed, call.parsed(), token.parsed());
  } catch (const CLI::ParseError& error) {
    exitCode = app.exit(error) == 0 ? EXIT_SUCCESS : kUsageError;
    return std::nullopt;
  }
  return settings;
}

}  // namespace orvane::terminal
