#include "bench/idlephones.h"

#include <memory>
#include <string>
#include <vector>

#include "bench/echohost.h"
#include "bench/relaydesk.h"
#include "terminal/client/client.h"

namespace orvane::bench {
namespace {

constexpr size_t kPhones = 1000;
constexpr const char* kTerminal = "t3";

}  // namespace

double idlePhoneMemory(const test::Cluster& cluster, bool hasTls) {
  const test::TempDir folder;
  const Server relay = startRelay(cluster, "r1", folder.path(), cluster.urls(),
                                  hasTls ? std::vector<std::string>{"--tls-self"} : std::vector<std::string>{});
  const EchoHost host(cluster, kTerminal, kPhones + 1);
  terminal::ClientOptions options;
  if (hasTls) options.certificate = folder.path() / "tls.crt";
  const std::string login = test::loginFrame(kTerminal, "t");
  const auto first = test::loginThrough(relay.port(), kTerminal, "t", options);
  const double before = relay.residentBytes();
  std::vector<std::unique_ptr<terminal::Client>> phones;
  while (phones.size() < kPhones) {
    phones.push_back(std::make_unique<terminal::Client>(relay.port(), options));
    phones.back()->send(login);
    phones.back()->receive();
  }
  return (relay.residentBytes() - before) / kPhones;
}

}  // namespace orvane::bench
