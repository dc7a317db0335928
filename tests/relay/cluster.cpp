#include "tests/relay/cluster.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>
#include <unistd.h>

namespace orvane::test {

Cluster::Cluster(bool hasTls, size_t terminals)
    : host_(fmt::format("127.{}.{}.1", 1 + getpid() / 250 % 250, getpid() % 250)), hasTls_(hasTls) {
  std::string names = "t1";
  for (size_t i = 2; i <= terminals; ++i) names += fmt::format(",t{}", i);
  std::vector<std::string> arguments{"setup",       (dir_.path() / "c").string(),
                                     "--terminals", names,
                                     "--relays",    "r1,r2",
                                     "--servers",   fmt::format("{},{},{}", place(0), place(1), place(2))};
  if (hasTls) arguments.emplace_back("--tls");
  const Outcome setup = runProgram(POCKET_RELAY, arguments);
  if (setup.exitCode != 0) throw std::runtime_error("the cluster was not set up: " + setup.error);
  for (size_t i = 0; i < servers_.size(); ++i) restartServer(i);
}

std::string Cluster::place(size_t index) const { return fmt::format("{}:{}", host_, 14222 + index); }

void Cluster::restartServer(size_t index) {
  servers_.at(index).reset();
  const std::filesystem::path folder = dir_.path() / "c" / fmt::format("server{}", index + 1);
  servers_.at(index) =
      std::make_unique<Program>(NATS_SERVER, std::vector<std::string>{"-c", "nats.conf", "-l", "log"}, folder);
}

std::vector<std::string> Cluster::urlList() const {
  const std::string scheme = hasTls_ ? "tls://" : "nats://";
  return {scheme + place(0), scheme + place(1), scheme + place(2)};
}

std::string Cluster::urls() const { return fmt::format("{}", fmt::join(urlList(), ",")); }

std::filesystem::path Cluster::credentials(const std::string& name) const {
  return dir_.path() / "c" / (name.starts_with('r') ? "relays" : "terminals") / (name + ".credentials");
}

std::vector<std::string> Cluster::terminalArguments(const std::string& name,
                                                    const std::filesystem::path& dataDir) const {
  return {
      "--data", dataDir.string(), "--relay", urls(), "--name", name, "--relay-credentials", credentials(name).string()};
}

RelayProcess::RelayProcess(const Cluster& cluster, const std::string& name, uint16_t port)
    : program_(POCKET_RELAY, {"--port", std::to_string(port), "--data", dir_.path().string(), "--servers",
                              cluster.urls(), "--credentials", cluster.credentials(name).string()}) {
  const std::string line = program_.readLine();
  const size_t colon = line.rfind(':');
  if (!line.starts_with("http://127.0.0.1:")) throw std::runtime_error("the relay did not start: " + line);
  port_ = static_cast<uint16_t>(std::stoi(line.substr(colon + 1)));
}

FarTerminal::FarTerminal(const Cluster& cluster, std::string name, const std::vector<std::string>& options)
    : name_(std::move(name)), arguments_(cluster.terminalArguments(name_, dir_.path())) {
  arguments_.insert(arguments_.end(), options.begin(), options.end());
  restart();
}

void FarTerminal::restart() {
  program_.reset();
  program_ = std::make_unique<Program>(POCKET_TERMINAL, arguments_);
  const std::string line = program_->readLine();
  const std::string start = fmt::format("/#terminal={}", name_);
  const size_t token = line.find("&token=");
  if (line.find(start) == std::string::npos) throw std::runtime_error("the terminal did not start: " + line);
  if (token != std::string::npos) token_ = line.substr(token + 7);
}

std::string loginFrame(const std::string& terminal, const std::string& token, const std::string& more) {
  return fmt::format(R"({{"id":1,"topic":"login","terminal":"{}","token":"{}"{}}})", terminal, token, more);
}

std::unique_ptr<terminal::Client> loginThrough(uint16_t port, const std::string& terminal, const std::string& token,
                                               const terminal::ClientOptions& options) {
  std::string last;
  for (int i = 0; i < 600; ++i) {
    try {
      auto client = std::make_unique<terminal::Client>(port, options);
      client->send(loginFrame(terminal, token));
      const terminal::Reply reply = client->receive();
      if (reply.message.empty()) return client;
      last = reply.message;
      const uint16_t code = client->waitClose();
      if (code != 1013 && code != 1012 && code != 4404) break;
    } catch (const terminal::ClientError& error) {
      last = error.what();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  throw std::runtime_error("no login at " + terminal + ": " + last);
}

uint16_t tryLogin(uint16_t port, const std::string& terminal, const std::string& token) {
  terminal::Client client(port);
  client.send(loginFrame(terminal, token));
  return client.waitClose();
}

}  // namespace orvane::test
