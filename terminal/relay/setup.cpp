#include "terminal/relay/setup.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "terminal/certificate.h"
#include "terminal/datadir.h"
#include "terminal/privatefile.h"
#include "terminal/relay/credentials.h"
#include "terminal/relay/serverconfig.h"

namespace orvane::terminal::relay {
namespace {

constexpr const char* kExtension = ".credentials";
constexpr const char* kOwnPage = "http://127.0.0.1:8800";  // of a relay with default settings on this machine

std::string readText(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error(fmt::format("cannot read {}", file.string()));
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<ServerPlace> readPlaces(const std::vector<std::string>& servers) {
  std::vector<ServerPlace> places;
  places.reserve(servers.size());
  for (const std::string& each : servers) places.push_back(readPlace(each));
  return places;
}

bool areOnLoopback(const std::vector<ServerPlace>& places) {
  return std::all_of(places.begin(), places.end(), [](const ServerPlace& each) { return each.isLoopback(); });
}

// The servers' certificates, made if they are missing; empty without TLS.
std::string keepCertificates(const SetupOptions& options, const std::vector<ServerPlace>& places) {
  if (!options.wantsTls && areOnLoopback(places)) return {};
  std::string all;
  for (size_t i = 0; i < places.size(); ++i) {
    const TlsFiles files = ownTlsFiles(options.dir / serverName(i));
    keepPeerCertificate(files, serverName(i), places[i].host);
    all += readText(files.certificate);
  }
  return all;
}

// The key of an existing file stays valid.
NKey keyOf(const std::filesystem::path& file) {
  return std::filesystem::exists(file) ? readCredentials(file).key : NKey::make();
}

// Those that are asked for, and those of an earlier run.
std::set<std::string> allNames(const std::filesystem::path& dir, const std::vector<std::string>& asked) {
  std::set<std::string> names(asked.begin(), asked.end());
  for (const auto& each : std::filesystem::directory_iterator(dir)) {
    if (each.path().extension() == kExtension) names.insert(each.path().stem().string());
  }
  return names;
}

// `common` has what all of them share.
std::vector<ServerUser> keepCredentials(const std::filesystem::path& dir, const std::vector<std::string>& asked,
                                        Credentials common, ServerUser::Kind kind) {
  makeDataDir(dir);
  std::vector<ServerUser> users;
  for (const std::string& name : allNames(dir, asked)) {
    const std::filesystem::path file = dir / (name + kExtension);
    common.name = name;
    common.key = keyOf(file);
    savePrivately(file, writeCredentials(common));
    users.push_back({kind, name, common.key.publicText()});
  }
  return users;
}

std::string keepPage(const SetupOptions& options, const std::vector<ServerPlace>& places) {
  const std::filesystem::path file = options.dir / "page";
  std::string page = options.page;
  if (page.empty() && std::filesystem::exists(file)) std::getline(std::ifstream(file), page);
  if (page.empty() && areOnLoopback(places)) page = kOwnPage;
  if (page.empty()) throw std::runtime_error("add --page: the address that phones open, such as https://relay.example");
  savePrivately(file, page);
  return page;
}

// What the servers show each other.
std::string keepSecret(const std::filesystem::path& file) {
  if (!std::filesystem::exists(file)) savePrivately(file, NKey::make().seed());
  return readText(file);
}

}  // namespace

void setUpCluster(const SetupOptions& options) {
  const std::vector<ServerPlace> places = readPlaces(options.servers);
  makeDataDir(options.dir);
  for (size_t i = 0; i < places.size(); ++i) makeDataDir(options.dir / serverName(i));
  const std::string page = keepPage(options, places);
  const std::string authority = keepCertificates(options, places);
  const Credentials common{{}, NKey::make(), page, authority};
  std::vector<ServerUser> users =
      keepCredentials(options.dir / "terminals", options.terminals, common, ServerUser::Kind::Terminal);
  for (ServerUser& each : keepCredentials(options.dir / "relays", options.relays, common, ServerUser::Kind::Relay)) {
    users.push_back(std::move(each));
  }
  const std::string secret = keepSecret(options.dir / "routes.secret");
  for (size_t i = 0; i < places.size(); ++i) {
    const std::filesystem::path dir = options.dir / serverName(i);
    if (!authority.empty()) savePrivately(dir / "peers.crt", authority);
    savePrivately(dir / "nats.conf", writeServerConfig(places, i, users, secret, !authority.empty()));
  }
  std::vector<std::string> urls;
  urls.reserve(places.size());
  for (const ServerPlace& each : places) urls.push_back(each.url(!authority.empty()));
  fmt::print(
      "In {0}: nats.conf of each server, credentials of each terminal and relay.\n"
      "Start a server in its folder: cd {0}/server1 && nats-server -c nats.conf\n"
      "Start a relay: pocket-relay --servers {1} --credentials {0}/relays/{2}.credentials\n"
      "Start a terminal: pocket-terminal --relay {1} --name {3} --relay-credentials {0}/terminals/{3}.credentials\n"
      "Phones open: {4}\n",
      options.dir.string(), fmt::join(urls, ","), options.relays.front(), options.terminals.front(), page);
}

}  // namespace orvane::terminal::relay
