#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include <fmt/format.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include "pocketagent/ipocketagent.h"
#include "terminal/certificate.h"
#include "terminal/client/call.h"
#include "terminal/datadir.h"
#include "terminal/gateway.h"
#include "terminal/logging.h"
#include "terminal/ownersfile.h"
#include "terminal/settings.h"
#include "terminal/stopsignals.h"
#include "terminal/tokencommand.h"
#include "terminal/trading/tradinghost.h"

namespace orvane::terminal {
namespace {

// Another terminal has this one's name. May be set on any thread; ends the program as SIGTERM does.
class Refusal {
 public:
  void set() {
    isSet_ = true;
    kill(getpid(), SIGTERM);
  }
  bool isSet() const { return isSet_; }

 private:
  std::atomic<bool> isSet_ = false;
};

// Starts the agent, then the host's own messages, and stops them in reverse order.
class Running {
 public:
  Running(TradingHost& host, Gateway& gateway, const std::string& userid) : host_(host), gateway_(gateway) {
    IMobileSrv& server = gateway.mobileService();
    MobileSrvInfo info;
    info.url = gateway.url();
    info.userid = userid;
    host_.setMobileServer(&server);
    agent_->start(info);
    if (!server.isRunning()) throw std::runtime_error("the agent did not start: see the log, with --log-level debug");
    host_.start([agent = agent_](const MobileMessage& message) { agent->pushNotify(message); });
  }
  ~Running() {
    gateway_.drain();
    host_.stop();
    agent_->stop();
    host_.setMobileServer(nullptr);
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  TradingHost& host_;
  Gateway& gateway_;
  IPocketAgent* agent_ = IPocketAgent::getInstance();
};

void report(const std::string& fault) { std::fputs(fmt::format("pocket-terminal: {}\n", fault).c_str(), stderr); }

// On a disk that cannot be written an old certificate will do.
void keepCertificate(const Settings& settings) try {
  keepOwnCertificate(*settings.tls, settings.address);
} catch (const std::runtime_error& error) {
  if (!std::filesystem::exists(settings.tls->certificate) || !std::filesystem::exists(settings.tls->key)) throw;
  report(error.what());
}

// Old prices are only a warning, because clients can still list and cancel. Without writes no action works.
std::vector<HealthCheck> checkHost(const TradingHost& host, const LogFile& log) {
  constexpr double kOldSeconds = 5;
  const TradingHealth health = host.health();
  HealthCheck database{.name = "database:writes"};
  if (!health.storageFault.empty()) {
    database.status = HealthStatus::Fail;
    database.output = health.storageFault;
  }
  HealthCheck clock{.name = "clock:agreement"};
  if (!health.clockFault.empty()) {
    clock.status = HealthStatus::Warn;
    clock.output = health.clockFault;
  }
  HealthCheck lines{.name = "log:writes", .output = log.fault()};
  if (!lines.output.empty()) lines.status = HealthStatus::Warn;
  if (!health.quotesAge) return {database, clock, lines};
  HealthCheck quotes{.name = "quotes:age", .seconds = health.quotesAge->count()};
  if (*quotes.seconds > kOldSeconds) {
    quotes.status = HealthStatus::Warn;
    quotes.output = "the prices do not move";
  }
  return {database, clock, lines, quotes};
}

// Both on standard output and in the log, because nobody sees the output of a service.
void printFingerprint(const std::string& sha256) {
  const std::string text = fmt::format("Certificate's SHA-256: {}", sha256);
  fmt::print("{}\n", text);
  TERMINAL_LOG(gatewayLogger(), Info, "{}", text);
}

Entrances entrancesOf(const Settings& settings, Refusal& refusal) {
  NetLimits limits;
  limits.head = settings.loginTime;
  limits.idle = settings.idleTime;
  limits.maxBacklogBytes = settings.maxBacklogBytes;
  limits.maxCompressionBytes = settings.maxCompressionBytes;
  Entrances entrances;
  if (settings.listens) {
    entrances.listen = {.address = settings.address,
                        .port = settings.port,
                        .tls = settings.tls,
                        .allowedOrigins = settings.allowedOrigins,
                        .maxConnections = settings.maxConnections,
                        .limits = limits};
  }
  if (!settings.relay) return entrances;
  const RelaySettings& relay = *settings.relay;
  relay::Credentials credentials = relay::readCredentials(relay.credentials);
  if (credentials.name != relay.name) {
    throw std::runtime_error(fmt::format("the credentials {0} are those of {1}, so --name must be {1}",
                                         relay.credentials.string(), credentials.name));
  }
  relay::PortOptions port;
  port.name = relay.name;
  port.limits.maxBacklogBytes = settings.maxBacklogBytes;
  port.limits.maxSessions = settings.maxConnections;
  port.onRefused = [&refusal] { refusal.set(); };
  entrances.relay.emplace(RelayEntrance{{relay.urls, std::move(credentials)}, std::move(port)});
  return entrances;
}

int serve(const Settings& settings) try {
  const StopSignals stopSignals;
  makeDataDir(settings.dataDir);
  actAsOwner(settings.dataDir);
  const auto log = setUpLogging(settings.logFile, settings.logLevel);
  TradingHost host(settings.trading);
  if (settings.keepsOwnCertificate) keepCertificate(settings);
  Refusal refusal;
  AsioLoop loop;
  Gateway gateway(loop, entrancesOf(settings, refusal),
                  {.dataDir = settings.dataDir, .audit = settings.audit, .maxBytes = settings.gatewayBytes},
                  {.loginTime = settings.loginTime,
                   .maxOfToken = settings.maxConnections / 3,
                   .probe = [&host, log] { return checkHost(host, *log); },
                   .figures = {},
                   .prices = &host.prices()},
                  [&host](auto answer) { host.whenStored(std::move(answer)); });
  const Running running(host, gateway, settings.relay ? settings.relay->name : "paper");
  gateway.noteLink();
  if (const std::string fault = host.health().storageFault; !fault.empty()) report(fault);
  printLink(settings, gateway.link());
  if (settings.tls && settings.listens) printFingerprint(fingerprint(settings.tls->certificate));
  std::fflush(stdout);
  stopSignals.wait();
  if (!refusal.isSet()) return EXIT_SUCCESS;
  throw std::runtime_error(
      fmt::format("a terminal with the name {0} is present already: end it, or give this one another name with "
                  "pocket-relay setup",
                  settings.relay->name));
} catch (const std::exception& error) {
  report(error.what());
  return EXIT_FAILURE;
}

}  // namespace
}  // namespace orvane::terminal

// glibc would stop mapping long replies alone after the first, and keep the memory of the backlog of slow readers.
constexpr int kMappedBytes = 1024 * 1024;

int main(int argc, char** argv) {
  mallopt(M_MMAP_THRESHOLD, kMappedBytes);
  int exitCode = EXIT_SUCCESS;
  const auto settings = orvane::terminal::readSettings(argc, argv, exitCode);
  if (!settings) return exitCode;
  umask(S_IRWXG | S_IRWXO);  // databases, audit and log are private to the user
  if (settings->token) return orvane::terminal::runToken(*settings);
  return settings->call ? orvane::terminal::runCall(*settings->call) : orvane::terminal::serve(*settings);
}
