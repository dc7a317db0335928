#include "terminal/settings.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <fmt/format.h>
#include <unistd.h>

#include "terminal/commandline.h"
#include "terminal/json.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/subjects.h"

namespace orvane::terminal {
namespace {

constexpr int64_t kMebibyte = int64_t{1} << 20;
constexpr const char* kMoreOptions = "\nThe terminal's own options, such as --data, may be given here too.";

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

std::string checkUnsigned(const std::string& number) { return number.starts_with('-') ? number + " is below 0" : ""; }

// Values of options that need more than a conversion.
struct Arguments {
  std::string quotes = "walk";
  int auditMebibytes = 64;
  int gatewayMebibytes = 1024;
  CallSettings call;
  bool json = false;
  TokenSettings token;
  std::string rights;
  RelaySettings relay;
};

void addFileOptions(CLI::App& app, Settings& settings, Arguments& typed) {
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
}

void addRelayOptions(CLI::App& app, Arguments& typed) {
  app.option_defaults()->group("Relay");
  CLI::Option* name = app.add_option("--name", typed.relay.name, "name of this terminal at its relays")
                          ->check(CLI::Validator(relay::checkName, "NAME"));
  CLI::Option* credentials =
      app.add_option("--relay-credentials", typed.relay.credentials, "this terminal's file of pocket-relay setup");
  app.add_option("--relay", typed.relay.urls,
                 "phones come in through relays; the cluster's servers, such as tls://one:4222,tls://two:4222. The "
                 "terminal itself listens only if --listen or --port is given too")
      ->delimiter(',')
      ->check(CLI::Validator(relay::checkUrl, "URL"))
      ->needs(name)
      ->needs(credentials);
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

// Fills in what follows from the arguments.
void complete(Settings& settings, const Arguments& typed, bool isCall, bool isToken) {
  settings.audit.fileBytes = kMebibyte * typed.auditMebibytes;
  settings.gatewayBytes = kMebibyte * typed.gatewayMebibytes;
  settings.trading.dataDir = settings.dataDir;
  setQuotes(settings.trading, typed.quotes);
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

void completeRelay(Settings& settings, const Arguments& typed, const CLI::App& app) {
  if (typed.relay.urls.empty()) return;
  settings.relay = typed.relay;
  settings.listens = app.count("--listen") > 0 || app.count("--port") > 0;
}

}  // namespace

std::optional<Settings> readSettings(int argc, const char* const* argv, int& exitCode) {
  Settings settings;
  Arguments typed;
  CLI::App app("A paper-trading terminal that phones can see and work.", "pocket-terminal");
  app.set_version_flag("--version", "pocket-terminal " POCKETAGENT_VERSION);
  ServerOptions server(settings, "pocket-terminal", "terminal.log");
  server.add(app, "folder of the databases, the audit and the log");
  addFileOptions(app, settings, typed);
  addRelayOptions(app, typed);
  addTradingOptions(app, settings, typed);
  const CLI::App& call = addCall(app, typed);
  const CLI::App& token = addToken(app, typed);
  const bool isRead = parseCommandLine(app, argc, argv, exitCode, [&] {
    server.complete(!call.parsed());
    complete(settings, typed, call.parsed(), token.parsed());
    completeRelay(settings, typed, app);
  });
  return isRead ? std::optional(settings) : std::nullopt;
}

}  // namespace orvane::terminal
