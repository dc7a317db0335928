#include "bench/phones.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <stdexcept>
#include <utility>

#include "bench/timing.h"

namespace orvane::bench {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::ip::tcp;
using boost::system::error_code;
using Socket = beast::websocket::stream<tcp::socket>;

void require(const error_code& error) {
  if (error) {
    throw std::runtime_error("the load's connection fails: " + error.message());
  }
}

}  // namespace

struct Phones::Shared {
  asio::io_context io{1};
  std::string request;
  std::string reply;
  size_t unsent = 0;
};

class Phones::Phone {
 public:
  Phone(Shared& shared, uint16_t port, const std::string& login) : shared_(shared), ws_(shared.io) {
    ws_.next_layer().connect({asio::ip::address_v4::loopback(), port});
    ws_.next_layer().set_option(tcp::no_delay(true));
    ws_.handshake("127.0.0.1", "/ws");
    if (!login.empty()) {
      ws_.write(asio::buffer(login));
      ws_.read(buffer_);
    }
    buffer_.clear();
  }

  void ask() {
    if (shared_.unsent == 0) {
      return;
    }
    --shared_.unsent;
    ws_.async_write(asio::buffer(shared_.request), [this](const error_code& error, size_t /*bytes*/) {
      require(error);
      ws_.async_read(buffer_, [this](const error_code& readError, size_t /*bytes*/) { onReply(readError); });
    });
  }

 private:
  void onReply(const error_code& error) {
    require(error);
    if (std::string_view(static_cast<const char*>(buffer_.cdata().data()), buffer_.size()) != shared_.reply) {
      throw std::runtime_error("a server's reply is not the one expected: " +
                               beast::buffers_to_string(buffer_.cdata()));
    }
    buffer_.clear();
    ask();
  }

  Shared& shared_;
  Socket ws_;
  beast::flat_buffer buffer_;
};

Phones::Phones(uint16_t port, size_t count, const std::string& login, std::string request, std::string reply)
    : shared_(std::make_unique<Shared>()) {
  shared_->request = std::move(request);
  shared_->reply = std::move(reply);
  while (phones_.size() < count) {
    phones_.push_back(std::make_unique<Phone>(*shared_, port, login));
  }
}

Phones::~Phones() = default;

double Phones::load(size_t requests) {
  const double begin = wallTime();
  shared_->unsent = requests;
  for (const auto& phone : phones_) {
    phone->ask();
  }
  shared_->io.restart();
  shared_->io.run();
  return static_cast<double>(requests) * 1e9 / (wallTime() - begin);
}

namespace {

// One connection of the echo server.
class Echo : public std::enable_shared_from_this<Echo> {
 public:
  Echo(tcp::socket socket, const std::string& reply) : ws_(std::move(socket)), reply_(reply) {}

  void start() {
    ws_.next_layer().set_option(tcp::no_delay(true));
    ws_.text(true);
    ws_.async_accept([self = shared_from_this()](const error_code& error) { self->onWritten(error); });
  }

 private:
  void onWritten(const error_code& error) {
    if (!error) {
      buffer_.clear();
      ws_.async_read(buffer_, [self = shared_from_this()](const error_code& e, size_t /*bytes*/) { self->onRead(e); });
    }
  }
  void onRead(const error_code& error) {
    if (!error) {
      ws_.async_write(asio::buffer(reply_),
                      [self = shared_from_this()](const error_code& e, size_t /*bytes*/) { self->onWritten(e); });
    }
  }

  Socket ws_;
  beast::flat_buffer buffer_;
  const std::string& reply_;
};

void accept(tcp::acceptor& acceptor, const std::string& reply) {
  acceptor.async_accept([&](const error_code& error, tcp::socket socket) {
    if (!error) {
      std::make_shared<Echo>(std::move(socket), reply)->start();
    }
    accept(acceptor, reply);
  });
}

}  // namespace

void runEchoServer(const std::string& reply) {
  asio::io_context io{1};
  tcp::acceptor acceptor(io, {asio::ip::address_v4::loopback(), 0});
  std::printf("%u\n", static_cast<unsigned>(acceptor.local_endpoint().port()));
  std::fflush(stdout);
  accept(acceptor, reply);
  io.run();
}

}  // namespace orvane::bench
