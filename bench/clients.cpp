#include "bench/clients.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/beast/core.hpp>
#include <chrono>
#include <random>
#include <stdexcept>
#include <string_view>

#include "bench/timing.h"
#include "bench/websocket.h"

namespace orvane::bench {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using boost::system::error_code;

}  // namespace

struct Clients::Shared {
  asio::io_context io{1};
  Exchange exchange;
  size_t unsent = 0;
  double answered = 0;  // wall time of the last reply
  std::mt19937_64 random{11};
};

class Clients::Client {
 public:
  Client(Shared& shared, uint16_t port) : shared_(shared), ws_(shared.io) { connect(ws_, port, shared.exchange.login); }

  // Takes one of the unsent requests, unless it waits for a reply; then it takes one after that.
  void ask() {
    if (isWaiting_ || shared_.unsent == 0) return;
    --shared_.unsent;
    isWaiting_ = true;
    ws_.async_write(asio::buffer(shared_.exchange.request), [this](const error_code& error, size_t /*bytes*/) {
      require(error);
      ws_.async_read(buffer_, [this](const error_code& readError, size_t /*bytes*/) { onReply(readError); });
    });
  }

 private:
  void onReply(const error_code& error) {
    require(error);
    shared_.answered = wallTime();
    if (std::string_view(static_cast<const char*>(buffer_.cdata().data()), buffer_.size()) != shared_.exchange.reply) {
      throw std::runtime_error("unexpected reply: " + beast::buffers_to_string(buffer_.cdata()).substr(0, 4000));
    }
    buffer_.clear();
    isWaiting_ = false;
    ask();
  }

  Shared& shared_;
  Socket ws_;
  beast::flat_buffer buffer_;
  bool isWaiting_ = false;
};

Clients::Clients(uint16_t port, size_t count, const Exchange& exchange) : shared_(std::make_unique<Shared>()) {
  shared_->exchange = exchange;
  while (clients_.size() < count) clients_.push_back(std::make_unique<Client>(*shared_, port));
}

Clients::~Clients() = default;

double Clients::load(size_t requests) {
  const double begin = wallTime();
  shared_->unsent = requests;
  for (const auto& client : clients_) client->ask();
  shared_->io.restart();
  shared_->io.run();
  return shared_->answered - begin;
}

void Clients::pace(double perSecond, const std::stop_token& stop) {
  using Clock = std::chrono::steady_clock;
  std::exponential_distribution<double> gap(perSecond);
  auto isOpen = asio::make_work_guard(shared_->io);  // keeps run_until waiting while no request is on its way
  shared_->io.restart();
  Clock::time_point next = Clock::now();
  for (size_t turn = 0; !stop.stop_requested(); ++turn) {
    next += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(gap(shared_->random)));
    shared_->io.run_until(next);
    ++shared_->unsent;
    clients_[turn % clients_.size()]->ask();
  }
  isOpen.reset();
  shared_->io.run();
}

std::string askOnce(uint16_t port, const std::string& login, const std::string& request) {
  asio::io_context io{1};
  Socket ws(io);
  connect(ws, port, login);
  beast::flat_buffer reply;
  ws.write(asio::buffer(request));
  ws.read(reply);
  return beast::buffers_to_string(reply.cdata());
}

}  // namespace orvane::bench
