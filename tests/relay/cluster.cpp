#include "tests/relay/cluster.h"

#include <boost/process/args.hpp>
#include <boost/process/extend.hpp>
#include <boost/process/io.hpp>
#include <boost/process/start_dir.hpp>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <linux/close_range.h>
#include <unistd.h>

#include "tests/support/holdssoon.h"

namespace orvane::test {
namespace {

namespace process = boost::process;

// The user's own settings must not reach the tests.
const bool kIsCutOff = setenv("XDG_CONFIG_HOME", "/nowhere", 1) == 0;

constexpr uint16_t kFirstPort = 14222;

std::vector<std::string> terminalArguments(const Cluster& cluster, const std::string& name,
                                           const std::filesystem::path& dir) {
  return {"--data",
          dir.string(),
          "--relay",
          cluster.urls(),
          "--name",
          name,
          "--relay-credentials",
          cluster.credentials(name).string()};
}

}  // namespace

// Without the test's own sockets: a connection that a phone closes would stay open in the program.
Program::Program(const std::string& path, const std::vector<std::string>& arguments,
                 const std::filesystem::path& folder)
    : process_(path, process::args(arguments), process::start_dir(folder.string()),
               (process::std_out & process::std_err) > output_,
               process::extend::on_exec_setup([](auto& /*executor*/) { close_range(3, ~0U, CLOSE_RANGE_CLOEXEC); })) {}

Program::~Program() {
  if (process_.valid() && process_.running()) end(SIGKILL);
}

std::string Program::readLine() {
  std::string line;
  std::getline(output_, line);
  return line;
}

void Program::send(int signal) { ::kill(process_.id(), signal); }

int Program::end(int signal) {
  send(signal);
  if (signal != SIGKILL && !holdsSoon([this] { return !process_.running(); })) send(SIGKILL);
  process_.wait();
  return WIFSIGNALED(process_.native_exit_code()) ? -1 : process_.exit_code();
}

Cluster::Cluster(bool hasTls, size_t terminals)
    : host_(fmt::format("127.{}.{}.1", 1 + getpid() / 250 % 250, getpid() % 250)), hasTls_(hasTls) {
  std::string names = "t1";
  for (size_t i = 2; i <= terminals; ++i) names += fmt::format(",t{}", i);
  std::vector<std::string> arguments{"setup",       (dir_.path() / "c").string(),
                                     "--terminals", names,
                                     "--relays",    "r1,r2",
                                     "--servers",   fmt::format("{},{},{}", place(0), place(1), place(2))};
  if (hasTls) arguments.emplace_back("--tls");
  Program setup(POCKET_RELAY, arguments);
  const std::string line = setup.readLine();
  if (setup.end(0) != 0) throw std::runtime_error("the cluster was not set up: " + line);
  for (size_t i = 0; i < servers_.size(); ++i) startServer(i);
}

std::string Cluster::place(size_t index) const { return fmt::format("{}:{}", host_, kFirstPort + index); }

void Cluster::startServer(size_t index) {
  const std::filesystem::path folder = dir_.path() / "c" / fmt::format("server{}", index + 1);
  servers_.at(index) =
      std::make_unique<Program>(NATS_SERVER, std::vector<std::string>{"-c", "nats.conf", "-l", "log"}, folder);
}

std::string Cluster::url(size_t index) const { return (hasTls_ ? "tls://" : "nats://") + place(index); }

std::string Cluster::urls() const { return fmt::format("{},{},{}", url(0), url(1), url(2)); }

std::vector<std::string> Cluster::urlList() const { return {url(0), url(1), url(2)}; }

std::filesystem::path Cluster::credentials(const std::string& name) const {
  return dir_.path() / "c" / (name.starts_with('r') ? "relays" : "terminals") / (name + ".credentials");
}

RelayProcess::RelayProcess(const Cluster& cluster, const std::string& name, uint16_t port)
    : program_(POCKET_RELAY, {"--port", std::to_string(port), "--data", dir_.path().string(), "--servers",
                              cluster.urls(), "--credentials", cluster.credentials(name).string()}) {
  const std::string line = program_.readLine();
  const size_t colon = line.rfind(':');
  if (!line.starts_with("http://127.0.0.1:")) throw std::runtime_error("the relay did not start: " + line);
  port_ = static_cast<uint16_t>(std::stoi(line.substr(colon + 1)));
}

FarTerminal::FarTerminal(const Cluster& cluster, const std::string& name, std::vector<std::string> options)
    : name_(name), options_(std::move(options)) {
  restart(cluster);
}

void FarTerminal::giveFunds() const {
  SQLite::Database(dir_.path() / "terminal.db", SQLite::OPEN_READWRITE)
      .exec("UPDATE account SET pre_balance = 1e12 WHERE idx = 1");
}

void FarTerminal::restart(const Cluster& cluster) {
  std::vector<std::string> arguments = terminalArguments(cluster, name_, dir_.path());
  arguments.insert(arguments.end(), options_.begin(), options_.end());
  program_ = std::make_unique<Program>(POCKET_TERMINAL, arguments);
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

Refusal tryLogin(uint16_t port, const std::string& terminal, const std::string& token) {
  terminal::Client client(port);
  client.send(loginFrame(terminal, token));
  const std::string message = client.receive().message;
  return {message, client.waitClose()};
}

}  // namespace orvane::test
