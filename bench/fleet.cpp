#include "bench/fleet.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "bench/relaydesk.h"
#include "bench/timing.h"
#include "bench/websocket.h"
#include "terminal/net/asioloop.h"
#include "terminal/relay/natslink.h"
#include "terminal/relay/terminalport.h"

namespace orvane::bench {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using boost::system::error_code;
using terminal::Session;

constexpr size_t kLoggingIn = 100;  // phones at once
constexpr std::chrono::seconds kPatience{60};
constexpr const char* kWelcome = R"({"id":1,"topic":"login","message":"","data":null})";

// One push's text, as long as that of an order.
std::string pushText(size_t number) {
  return fmt::format(R"({{"seq":{},"topic":"order.push","message":"","data":"{}"}})", number, std::string(400, 'x'));
}

// A terminal that lets everybody in and has nothing to say but pushes.
class Host : public terminal::ISessionOwner {
 public:
  Host(terminal::AsioLoop& loop, const test::Cluster& cluster, const std::string& name, size_t maxSessions)
      : link_(loop, {cluster.urlList(), terminal::relay::readCredentials(cluster.credentials(name))}),
        port_(loop, link_, *this, {.name = name, .limits = {.maxSessions = maxSessions}, .onRefused = [] {}}) {
    port_.start();
  }

  // On the loop's thread, as all of them but the destructor.
  void push(const Session::Text& text) {
    for (const auto& session : sessions_) session->send(text);
  }
  void stop() { port_.stop(); }

  void onOpened(std::shared_ptr<Session> session) override { sessions_.push_back(std::move(session)); }
  void onFrame(Session& session, std::string_view /*text*/) override {
    session.admit();
    session.send(std::make_shared<const std::string>(kWelcome));
  }
  void onClosed(Session& session) override {
    std::erase_if(sessions_, [&](const auto& each) { return each.get() == &session; });
  }

 private:
  terminal::relay::NatsLink link_;
  terminal::relay::TerminalPort port_;
  std::vector<std::shared_ptr<Session>> sessions_;
};

// All terminals, on one thread.
class Hosts {
 public:
  Hosts(const test::Cluster& cluster, const FleetSize& size) {
    keepAlive_ = loop_.after(std::chrono::hours(1), [] {});
    for (size_t i = 1; i <= size.terminals; ++i) {
      all_.push_back(std::make_unique<Host>(loop_, cluster, fmt::format("t{}", i), size.phones));
    }
    loop_.start();
  }
  ~Hosts() {
    loop_.post([this] {
      keepAlive_.reset();
      for (const auto& each : all_) each->stop();
    });
    loop_.join();
  }
  Hosts(const Hosts&) = delete;
  Hosts& operator=(const Hosts&) = delete;

  void push(size_t number) {
    loop_.post([this, text = std::make_shared<const std::string>(pushText(number))] {
      for (const auto& each : all_) each->push(text);
    });
  }

 private:
  terminal::AsioLoop loop_;
  std::unique_ptr<terminal::Timer> keepAlive_;
  std::vector<std::unique_ptr<Host>> all_;
};

// A phone that logs in and then counts pushes. A fault throws out of the event loop.
class Phone {
  template <typename Step>
  auto next(Step step) {
    return [step = std::move(step)](const error_code& error, auto... /*bytes*/) {
      require(error);
      step();
    };
  }

 public:
  Phone(asio::io_context& io, uint16_t port, const std::string& terminal, std::function<void()> onEvent)
      : ws_(io), port_(port), login_(test::loginFrame(terminal, "t")), onEvent_(std::move(onEvent)) {}

  void logIn() {
    ws_.next_layer().async_connect({asio::ip::address_v4::loopback(), port_}, next([this] {
                                     ws_.async_handshake("127.0.0.1", "/ws", next([this] { sayLogin(); }));
                                   }));
  }

 private:
  void sayLogin() {
    ws_.async_write(asio::buffer(login_), next([this] { read(); }));
  }

  void read() {
    ws_.async_read(buffer_, next([this] { onMessage(); }));
  }

  void onMessage() {
    const std::string text = beast::buffers_to_string(buffer_.cdata());
    if (text != (pushes_ < 0 ? kWelcome : pushText(static_cast<size_t>(pushes_) + 1))) {
      throw std::runtime_error(fmt::format("after {} pushes a phone got {}", pushes_, text.substr(0, 200)));
    }
    ++pushes_;
    buffer_.clear();
    onEvent_();
    read();
  }

  Socket ws_;
  const uint16_t port_;
  const std::string login_;
  const std::function<void()> onEvent_;
  beast::flat_buffer buffer_;
  int pushes_ = -1;  // that have come; -1 before the login's answer
};

// All phones, on the caller's thread.
class Phones {
 public:
  Phones(const FleetSize& size, const std::vector<uint16_t>& relays) {
    for (size_t i = 0; i < size.phones; ++i) {
      const std::string terminal = fmt::format("t{}", i / relays.size() % size.terminals + 1);
      all_.push_back(std::make_unique<Phone>(io_, relays[i % relays.size()], terminal, [this] { onEvent(); }));
    }
  }

  void logIn() {
    next_ = kLoggingIn;
    for (size_t i = 0; i < std::min(kLoggingIn, all_.size()); ++i) all_[i]->logIn();
    awaitAll();
    next_ = all_.size();
  }

  // Until each phone has had one more message.
  void awaitAll() {
    waiting_ += all_.size();
    io_.restart();
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (waiting_ > 0 && io_.run_one_until(end) > 0) continue;
    if (waiting_ > 0) throw std::runtime_error(fmt::format("{} phones have not got their message", waiting_));
  }

 private:
  void onEvent() {
    --waiting_;
    if (next_ < all_.size()) all_[next_++]->logIn();
  }

  asio::io_context io_{1};
  std::vector<std::unique_ptr<Phone>> all_;
  size_t next_ = 0;  // to log in
  size_t waiting_ = 0;
};

// Processor time of the relays and the NATS servers since the object was made.
class Cost {
 public:
  Cost(const test::Cluster& cluster, const std::vector<const Server*>& relays) : cluster_(cluster), relays_(relays) {
    relayBegin_ = relayTime();
    serverBegin_ = serversTime(cluster_);
  }

  double relays() const { return relayTime() - relayBegin_; }
  double servers() const { return serversTime(cluster_) - serverBegin_; }

 private:
  double relayTime() const {
    double sum = 0;
    for (const Server* each : relays_) sum += each->processorTime();
    return sum;
  }

  const test::Cluster& cluster_;
  const std::vector<const Server*> relays_;
  double relayBegin_ = 0;
  double serverBegin_ = 0;
};

}  // namespace

std::string measureFleet(const FleetSize& size) {
  const test::Cluster cluster(false, size.terminals);
  const test::TempDir folder;
  const Server first = startRelay(cluster, "r1", folder.path() / "r1", cluster.urls());
  const Server second = startRelay(cluster, "r2", folder.path() / "r2", cluster.urls());
  const std::vector<const Server*> relays{&first, &second};
  Hosts hosts(cluster, size);
  std::this_thread::sleep_for(std::chrono::seconds(4));  // until all have claimed their names

  const auto phones = static_cast<double>(size.phones);
  Phones all(size, {first.port(), second.port()});
  const auto resident = [&] { return first.residentBytes() + second.residentBytes(); };
  const double memory = resident();
  const Cost loginCost(cluster, relays);
  const double begin = wallTime();
  all.logIn();
  const double loginTime = wallTime() - begin;
  const double loginRelays = loginCost.relays();
  const double loginServers = loginCost.servers();
  const double grown = resident() - memory;

  const Cost pushCost(cluster, relays);
  std::vector<double> rounds;
  for (size_t number = 1; number <= size.pushes; ++number) {
    const double sent = wallTime();
    hosts.push(number);
    all.awaitAll();
    rounds.push_back(wallTime() - sent);
  }
  const double deliveries = phones * static_cast<double>(size.pushes);
  std::sort(rounds.begin(), rounds.end());
  return fmt::format(
      "| {} phones on two relays, {} terminals | |\n|---|---|\n"
      "| logins a second | {:.0f} |\n| both relays' processor time for a login | {:.0f} µs |\n"
      "| three NATS servers' for a login | {:.0f} µs |\n| a relay's resident memory for a phone | {:.1f} KiB |\n"
      "| pushes that reached their phone | {:.0f} of {:.0f} |\n"
      "| a push of every terminal to all phones: median, slowest | {:.0f} ms, {:.0f} ms |\n"
      "| relays' processor time for a push to one phone | {:.1f} µs |\n"
      "| NATS servers' for a push to one phone | {:.2f} µs |\n\n",
      size.phones, size.terminals, phones * 1e9 / loginTime, loginRelays / phones / 1e3, loginServers / phones / 1e3,
      grown / phones / 1024, deliveries, deliveries, rounds[rounds.size() / 2] / 1e6, rounds.back() / 1e6,
      pushCost.relays() / deliveries / 1e3, pushCost.servers() / deliveries / 1e3);
}

}  // namespace orvane::bench
