#include "terminal/client/client.h"

#include <algorithm>
#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <utility>

#include <fmt/format.h>

#include "terminal/jsonmembers.h"
#include "terminal/securestream.h"
#include "terminal/tls.h"

namespace orvane::terminal {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;
using asio::ip::tcp;
using boost::system::error_code;

enum Name { Id, Topic, Message, Data, Text, Seq };
constexpr std::array<std::string_view, 6> kNames{"id", "topic", "message", "data", "text", "seq"};
constexpr size_t kMaxReply = size_t{256} * 1024 * 1024;

Reply readReply(std::string_view text) {
  JsonMembers members(text, kNames);
  if (const JsonResult result = members.read(); !result.ok || members.root() != JsonKind::Object) {
    throw ClientError(fmt::format("the terminal's answer cannot be read: {}", result.message));
  }
  return {std::string(members[Id].raw),   members[Topic].text, members[Message].text,
          std::string(members[Data].raw), members[Text].text,  std::string(members[Seq].raw)};
}

}  // namespace

// Beast's synchronous calls have no time limit, so each call runs one asynchronous operation to its end.
struct Client::Connection {
  explicit Connection(const ClientOptions& options)
      : patience(options.patience),
        tls(options.certificate.empty() ? nullptr : makeClientTls(options.certificate)),
        ws(beast::tcp_stream(io), tls.get()) {}

  // Runs what `begin` starts with the completion handler it is given.
  template <typename Begin>
  error_code run(Begin begin) {
    error_code outcome;
    bool done = false;
    begin([&](const error_code& error, auto&&... /*details*/) {
      outcome = error;
      done = true;
    });
    io.restart();
    io.run_for(patience);
    if (done) return outcome;
    tcp().close();
    io.restart();
    io.run();
    throw ClientError(fmt::format("no answer from the terminal within {} ms", patience.count()));
  }

  beast::tcp_stream& tcp() { return beast::get_lowest_layer(ws); }

  std::chrono::milliseconds patience;
  std::shared_ptr<asio::ssl::context> tls;
  asio::io_context io{1};
  websocket::stream<SecureStream, false> ws;
  beast::flat_buffer buffer;
};

Client::Client(uint16_t port, const ClientOptions& options) : connection_(std::make_unique<Connection>(options)) {
  const tcp::endpoint endpoint(asio::ip::make_address(options.address), port);
  const std::string& address = options.address;
  const std::string host = fmt::format("{}:{}", endpoint.address().is_v6() ? '[' + address + ']' : address, port);
  const auto require = [&](const error_code& error, std::string_view step) {
    if (error) throw ClientError(fmt::format("cannot connect to {}: {}{}", host, step, error.message()));
  };
  auto& ws = connection_->ws;
  require(connection_->run([&](auto done) { connection_->tcp().async_connect(endpoint, done); }), "");
  error_code ignored;
  connection_->tcp().socket().set_option(tcp::no_delay(true), ignored);
  ws.read_message_max(kMaxReply);
  if (ws.next_layer().isSecure()) {
    require(connection_->run([&](auto done) { ws.next_layer().handshake(asio::ssl::stream_base::client, done); }),
            "no TLS with the certificate that was given: ");
  }
  require(connection_->run([&](auto done) { ws.async_handshake(host, "/ws", done); }), "");
}

Client::~Client() {
  if (!connection_->ws.is_open()) return;
  try {
    connection_->run([this](auto done) { connection_->ws.async_close(websocket::close_code::normal, done); });
  } catch (const ClientError&) {
    // The terminal does not answer, but the connection ends anyway.
  }
}

void Client::login(const std::string& token) {
  const std::string id = std::to_string(++lastId_);
  send(fmt::format(R"({{"id":{},"topic":"login","token":{}}})", id, jsonString(token)));
  const Reply reply = take([&](const Reply& each) { return each.id == id; });
  if (!reply.message.empty()) throw ClientError(reply.message);
}

Reply Client::request(std::string_view topic, std::string_view data, int32_t terminalType) {
  const std::string id = std::to_string(++lastId_);
  send(fmt::format(R"({{"id":{},"topic":{},"terminalType":{}{}{}}})", id, jsonString(topic), terminalType,
                   data.empty() ? "" : ",\"data\":", data));
  return take([&](const Reply& each) { return each.id == id; });
}

Reply Client::waitPush(std::string_view topic) {
  return take([&](const Reply& each) { return each.id.empty() && each.topic == topic; });
}

void Client::send(std::string_view frame, bool asText) {
  auto& ws = connection_->ws;
  ws.text(asText);
  const error_code error =
      connection_->run([&](auto done) { ws.async_write(asio::buffer(frame.data(), frame.size()), done); });
  if (error) throw ClientError(fmt::format("cannot send to the terminal: {}", error.message()));
}

Reply Client::receive() {
  return take([](const Reply&) { return true; });
}

uint16_t Client::waitClose() {
  kept_.clear();
  auto& ws = connection_->ws;
  auto& buffer = connection_->buffer;
  error_code error;
  while (!error) {
    buffer.clear();
    error = connection_->run([&](auto done) { ws.async_read(buffer, done); });
  }
  return ws.reason().code;
}

Reply Client::read() {
  auto& ws = connection_->ws;
  auto& buffer = connection_->buffer;
  buffer.clear();
  const error_code error = connection_->run([&](auto done) { ws.async_read(buffer, done); });
  if (error == websocket::error::closed) {
    throw ClientError(fmt::format("the terminal closed the connection with {}: {}", ws.reason().code,
                                  std::string_view(ws.reason().reason.data(), ws.reason().reason.size())));
  }
  if (error) throw ClientError(fmt::format("the connection to the terminal is lost: {}", error.message()));
  const std::string_view text(static_cast<const char*>(buffer.cdata().data()), buffer.size());
  onMessage(text);
  return readReply(text);
}

// Returns the first wanted message, kept or new. The others are kept.
template <typename Wanted>
Reply Client::take(Wanted wanted) {
  auto found = std::find_if(kept_.begin(), kept_.end(), wanted);
  while (found == kept_.end()) {
    kept_.push_back(read());
    found = wanted(kept_.back()) ? std::prev(kept_.end()) : kept_.end();
  }
  Reply reply = std::move(*found);
  kept_.erase(found);
  return reply;
}

}  // namespace orvane::terminal
