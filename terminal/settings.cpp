#include "terminal/settings.h"

#include <CLI/CLI.hpp>
#include <boost/asio/ip/address.hpp>
#include <cstdlib>

#include <unistd.h>

#include "terminal/certificate.h"
#include "terminal/json.h"

namespace orvane::terminal {
namespace {

constexpr int kUsageError = 2;

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// Empty where the environment names no place.
std::filesystem::path defaultDataDir() {
  const std::filesystem::path data = environment("XDG_DATA_HOME");
  const std::filesystem::path home = environment("HOME");
  if (data.is_absolute()) return data / "pocket-terminal";
  return home.empty() ? home : home / ".local/share/pocket-terminal";
}

std::string checkData(const std::string& data) {
  const JsonResult result = checkJson(data);
  return result.ok ? "" : "not JSON: " + result.message;
}

std::string checkFinite(const std::string& number) {
  return number.find_first_not_of("0123456789.eE+-") == std::string::npos ? "" : number + " is not a number";
}

std::string checkUnsigned(const std::string& number) { return number.starts_with('-') ? number + " is below 0" : ""; }

// The values of the options as they were typed.
struct Arguments {
  std::string quotes = "walk";
  double loginSeconds = 10;
  double idleSeconds = 36;
  TlsFiles tls;
  CallSettings call;
  bool json = false;
};

std::string checkAddress(const std::string& text) {
  boost::system::error_code error;
  boost::asio::ip::make_address(text, error);
  return error ? text + " is no IP address" : "";
}

std::string checkOrigin(const std::string& origin) {
  const size_t host = origin.starts_with("https://") ? 8 : origin.starts_with("http://") ? 7 : origin.size();
  const bool isOrigin = host < origin.size() && origin.find_first_of("/?#@ ", host) == std::string::npos;
  return isOrigin ? "" : origin + " is no origin such as https://trade.example.com:8443";
}

void addNetworkOptions(CLI::App& app, Settings& settings, Arguments& typed) {
  app.add_option("--listen", settings.address, "IP address to listen on; beyond loopback TLS is a must")
      ->check(CLI::Validator(checkAddress, "ADDRESS"))
      ->capture_default_str();
  app.add_option("--port", settings.port, "port; 0 is any free one")->capture_default_str();
  CLI::Option* own = app.add_flag("--tls-self", settings.keepsOwnCertificate,
                                  "TLS with a certificate of its own, made and kept in the data folder");
  CLI::Option* certificate =
      app.add_option("--tls-cert", typed.tls.certificate, "TLS with the certificate of this file (PEM)")->excludes(own);
  app.add_option("--tls-key", typed.tls.key, "the key of --tls-cert (PEM)")->needs(certificate);
  app.add_option("--allow-origin", settings.allowedOrigins,
                 "origin of pages, beside its own, that may use the terminal")
      ->check(CLI::Validator(checkOrigin, "ORIGIN"));
}

void addOptions(CLI::App& app, Settings& settings, Arguments& typed) {
  addNetworkOptions(app, settings, typed);
  app.add_option("--data", settings.dataDir, "folder of the database, the token and the log")
      ->default_str(defaultDataDir().string());
  app.add_option("--log", settings.logFile, "log file")->default_str("terminal.log in the data folder");
  app.add_option("--log-level", settings.logLevel, "least level that is logged")
      ->check(CLI::IsMember({"trace", "debug", "info", "warn", "error", "off"}))
      ->capture_default_str();
  app.add_option("--quotes", typed.quotes, "walk, still, or a CSV file of quotes to replay")->capture_default_str();
  app.add_option("--seed", settings.trading.seed, "start of the random walk")
      ->check(CLI::Validator(checkUnsigned, "UINT"))
      ->capture_default_str();
  app.add_option("--login-timeout", typed.loginSeconds, "seconds within which a phone must log in")
      ->check(CLI::Validator(checkFinite, "SECONDS") & CLI::Range(0.01, 3600.0))
      ->capture_default_str();
  app.add_option("--idle-timeout", typed.idleSeconds, "seconds after which a silent phone is dropped")
      ->check(CLI::Validator(checkFinite, "SECONDS") & CLI::Range(0.01, 3600.0))
      ->capture_default_str();
}

CLI::App& addCall(CLI::App& app, Arguments& typed) {
  CLI::App& call = *app.add_subcommand("call", "send one request to a running terminal, and print the reply");
  call.fallthrough();
  call.add_option("TOPIC", typed.call.topic, "such as account.list")->required();
  call.add_option("DATA", typed.call.data, "the request's body, such as '[0, 3]'")
      ->check(CLI::Validator(checkData, "JSON"));
  call.add_option("--token", typed.call.token, "token, rather than that of the data folder");
  call.add_option("--terminal-type", typed.call.terminalType, "terminal type of the request")->capture_default_str();
  CLI::Option* json = call.add_flag("--json", typed.json, "print the bytes as they came");
  call.add_flag("--table", typed.call.asTable, "print a list as a table, as is done on a screen")->excludes(json);
  return call;
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

// What follows from what was typed.
void complete(Settings& settings, const Arguments& typed, bool isCall) {
  if (settings.dataDir.empty()) settings.dataDir = defaultDataDir();
  if (settings.dataDir.empty()) throw CLI::ValidationError("--data", "say a folder: the environment has no HOME");
  if (settings.logFile.empty()) settings.logFile = settings.dataDir / "terminal.log";
  settings.limits.login = milliseconds(typed.loginSeconds);
  settings.limits.idle = milliseconds(typed.idleSeconds);
  settings.trading.dataDir = settings.dataDir;
  setQuotes(settings.trading, typed.quotes);
  setTls(settings, typed.tls, isCall);
  if (!isCall) return;
  settings.call = typed.call;
  settings.call->asTable = typed.call.asTable || (!typed.json && isatty(STDOUT_FILENO) == 1);
}

}  // namespace

std::optional<Settings> readSettings(int argc, const char* const* argv, int& exitCode) {
  Settings settings;
  Arguments typed;
  CLI::App app("A paper-trading terminal that phones can see and work.", "pocket-terminal");
  app.set_version_flag("--version", "pocket-terminal " POCKETAGENT_VERSION);
  addOptions(app, settings, typed);
  const CLI::App& call = addCall(app, typed);
  try {
    app.parse(argc, argv);
    complete(settings, typed, call.parsed());
  } catch (const CLI::ParseError& error) {
    exitCode = app.exit(error) == 0 ? EXIT_SUCCESS : kUsageError;
    return std::nullopt;
  }
  return settings;
}

}  // namespace orvane::terminal
