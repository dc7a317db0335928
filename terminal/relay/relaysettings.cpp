#include "terminal/relay/relaysettings.h"

#include <CLI/CLI.hpp>

#include <fmt/format.h>

#include "terminal/commandline.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/subjects.h"

namespace orvane::terminal::relay {
namespace {

void addCluster(CLI::App& app, RelayServerSettings& settings) {
  app.option_defaults()->group("Cluster");
  app.add_option("--servers", settings.servers, "the cluster's servers, such as tls://one:4222,tls://two:4222")
      ->delimiter(',')
      ->check(CLI::Validator(checkUrl, "URL"));
  app.add_option("--credentials", settings.credentials, "this relay's file of pocket-relay setup");
}

CLI::App& addSetup(CLI::App& app, SetupOptions& setup) {
  CLI::App& command =
      *app.add_subcommand("setup",
                          "write the configuration of the cluster's servers, and the credentials that terminals "
                          "and relays need; run again, it adds what is missing");
  command.option_defaults()->group("Options")->configurable(false);
  const CLI::Validator isNamed(checkName, "NAME");
  command.add_option("DIR", setup.dir, "folder of the files")->required();
  command.add_option("--terminals", setup.terminals, "names of the terminals")
      ->delimiter(',')
      ->required()
      ->check(isNamed);
  command.add_option("--relays", setup.relays, "names of the relays")
      ->delimiter(',')
      ->check(isNamed)
      ->capture_default_str();
  command.add_option("--servers", setup.servers, "the servers as HOST:PORT; routes use the port plus 2000")
      ->delimiter(',')
      ->capture_default_str();
  command
      .add_option("--page", setup.page,
                  "the address that phones open, such as https://relay.example, for links and for the relays' "
                  "check of origins; http://127.0.0.1:8800 if all servers are on loopback")
      ->check(CLI::Validator(checkOrigin, "URL"));
  command.add_flag("--tls", setup.wantsTls, "TLS even if all servers are on loopback");
  return command;
}

void requireCluster(const RelayServerSettings& settings) {
  if (settings.servers.empty()) throw CLI::RequiredError("--servers");
  if (settings.credentials.empty()) throw CLI::RequiredError("--credentials");
}

}  // namespace

std::optional<RelayServerSettings> readRelaySettings(int argc, const char* const* argv, int& exitCode) {
  RelayServerSettings settings;
  settings.port = 8800;
  settings.maxConnections = 10'000;
  SetupOptions setup;
  CLI::App app("A relay that connects phones with terminals over a NATS cluster.", "pocket-relay");
  app.set_version_flag("--version", "pocket-relay " POCKETAGENT_VERSION);
  ServerOptions server(settings, "pocket-relay", "relay.log");
  server.add(app, "folder of the log and of the certificate of --tls-self");
  addCluster(app, settings);
  const CLI::App& command = addSetup(app, setup);
  const bool isRead = parseCommandLine(app, argc, argv, exitCode, [&] {
    server.complete(true);
    if (command.parsed()) {
      settings.setup = setup;
    } else {
      requireCluster(settings);
    }
  });
  return isRead ? std::optional(settings) : std::nullopt;
}

}  // namespace orvane::terminal::relay
