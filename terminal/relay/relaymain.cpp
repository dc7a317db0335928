#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <sys/stat.h>

#include "terminal/certificate.h"
#include "terminal/datadir.h"
#include "terminal/logging.h"
#include "terminal/net/asioloop.h"
#include "terminal/net/listener.h"
#include "terminal/ownersfile.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/relaypages.h"
#include "terminal/relay/relaysettings.h"
#include "terminal/relay/switchboard.h"
#include "terminal/stopsignals.h"

namespace orvane::terminal::relay {
namespace {

ListenOptions listenOptions(const RelayServerSettings& settings, const std::string& page) {
  NetLimits limits;
  limits.head = settings.loginTime;
  limits.idle = settings.idleTime;
  limits.maxBacklogBytes = settings.maxBacklogBytes;
  limits.maxCompressionBytes = settings.maxCompressionBytes;
  std::vector<std::string> origins = settings.allowedOrigins;
  origins.push_back(page);
  return {.address = settings.address,
          .port = settings.port,
          .tls = settings.tls,
          .allowedOrigins = std::move(origins),
          .maxConnections = settings.maxConnections,
          .limits = limits};
}

// The sockets, the cluster and what connects them. Ends with the object.
class Relay {
 public:
  explicit Relay(const RelayServerSettings& settings) : Relay(settings, readCredentials(settings.credentials)) {}
  ~Relay() {
    loop_.post([this] {
      board_.stop();
      listener_.stop();
    });
    loop_.join();
  }
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  std::string url() const { return listener_.url(); }

 private:
  Relay(const RelayServerSettings& settings, const Credentials& credentials)
      : link_(loop_, {settings.servers, credentials}),
        board_(loop_, link_, credentials.name, settings.loginTime),
        pages_(board_, [this] { return listener_.figures(); }),
        listener_(loop_.context(), listenOptions(settings, credentials.page), board_, pages_) {
    listener_.start();
    board_.start();
    loop_.start();
  }

  AsioLoop loop_;
  NatsLink link_;
  Switchboard board_;
  RelayPages pages_;
  Listener listener_;
};

int serve(const RelayServerSettings& settings) {
  const StopSignals stopSignals;
  makeDataDir(settings.dataDir);
  actAsOwner(settings.dataDir);
  const auto log = setUpLogging(settings.logFile, settings.logLevel);
  if (settings.keepsOwnCertificate) keepOwnCertificate(*settings.tls, settings.address);
  const Relay relay(settings);
  fmt::print("{}/\n", relay.url());
  if (settings.tls) fmt::print("Certificate's SHA-256: {}\n", fingerprint(settings.tls->certificate));
  std::fflush(stdout);
  stopSignals.wait();
  return EXIT_SUCCESS;
}

int run(const RelayServerSettings& settings) try {
  if (!settings.setup) return serve(settings);
  setUpCluster(*settings.setup);
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  std::fputs(fmt::format("pocket-relay: {}\n", error.what()).c_str(), stderr);
  return EXIT_FAILURE;
}

}  // namespace
}  // namespace orvane::terminal::relay

int main(int argc, char** argv) {
  int exitCode = EXIT_SUCCESS;
  const auto settings = orvane::terminal::relay::readRelaySettings(argc, argv, exitCode);
  if (!settings) return exitCode;
  umask(S_IRWXG | S_IRWXO);  // credentials, certificate and log are private to the user
  return orvane::terminal::relay::run(*settings);
}
