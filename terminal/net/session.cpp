#include "terminal/net/session.h"

#include <array>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <deque>
#include <optional>
#include <utility>

#include "terminal/logging.h"
#include "terminal/securestream.h"

namespace orvane::terminal {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::system::error_code;

constexpr std::chrono::milliseconds kCloseTime{3000};
constexpr std::chrono::milliseconds kStopTime{500};  // where the terminal itself waits for it
constexpr std::chrono::milliseconds kAtOnce{0};

const log4cxx::LoggerPtr& logger() {
  static const log4cxx::LoggerPtr instance = log4cxx::Logger::getLogger("Gateway");
  return instance;
}

// A page loads nothing from elsewhere, and stands in no frame of others.
constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kPageHeaders{{
    {"Cache-Control", "no-store"},
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
     "manifest-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
}};

std::string_view view(beast::string_view text) { return {text.data(), text.size()}; }

HttpRequest headOf(const http::request<http::empty_body>& request) {
  const std::string_view target = view(request.target());
  return {.method = view(request.method_string()),
          .path = target.substr(0, target.find('?')),
          .host = view(request[http::field::host]),
          .origin = view(request[http::field::origin]),
          .authorization = view(request[http::field::authorization]),
          .upgrades = websocket::is_upgrade(request)};
}

boost::asio::ip::address addressOf(const boost::asio::ip::tcp::socket& socket) {
  namespace ip = boost::asio::ip;
  error_code gone;
  ip::address address = socket.remote_endpoint(gone).address();
  if (!address.is_v6() || !address.to_v6().is_v4_mapped()) return address;
  return ip::make_address_v4(ip::v4_mapped, address.to_v6());
}

class WebSocketSession final : public Session, public std::enable_shared_from_this<WebSocketSession> {
  // A completion handler that keeps the session alive until it ran.
  template <typename... Arguments>
  auto handler(void (WebSocketSession::*operation)(Arguments...)) {
    return beast::bind_front_handler(operation, shared_from_this());
  }

 public:
  WebSocketSession(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context* tls, std::string name,
                   ISessionOwner& owner, const SessionLimits& limits)
      : address_(addressOf(socket)),
        ws_(beast::tcp_stream(std::move(socket)), tls),
        timer_(ws_.get_executor()),
        name_(std::move(name)),
        owner_(owner),
        limits_(limits) {}

  void start() override {
    error_code ignored;
    tcp().socket().set_option(boost::asio::ip::tcp::no_delay(true), ignored);  // a push must not hold up the reply
    tcp().expires_after(limits_.login);
    if (!stream().isSecure()) return readRequest();
    stream().handshake(boost::asio::ssl::stream_base::server, handler(&WebSocketSession::onHandshake));
  }

  void send(std::shared_ptr<const std::string> text) override {
    if (closing_) return;
    if (waitingBytes() > limits_.maxQueuedBytes) return dropSlowPeer();
    queuedBytes_ += text->size();
    queue_.push_back(std::move(text));
    if (queue_.size() == 1) write();
  }

  void close(CloseCode code, std::string_view reason) override {
    if (closing_) return;
    TERMINAL_LOG(logger(), Info, "{} is closed with {}: {}", name_, static_cast<unsigned>(code), reason);
    closing_ = true;
    closeCode_ = code;
    reason_.code = static_cast<uint16_t>(code);
    reason_.reason.assign(reason.data(), reason.size());
    if (!ws_.is_open()) return finishAfter(kAtOnce);  // there is nobody to say it to yet
    finishAfter(code == CloseCode::GoingAway ? kStopTime : kCloseTime);
    if (queue_.empty()) writeClose();
  }

  void cut(std::string_view reason) override {
    if (closing_) return;
    TERMINAL_LOG(logger(), Info, "{} is cut off: {}", name_, reason);
    closing_ = true;
    finishAfter(kAtOnce);
  }

  void admit() override {
    admitted_ = true;
    if (!closing_) timer_.cancel();
  }

  bool isAdmitted() const override { return admitted_; }
  bool isClosing() const override { return closing_; }
  std::optional<CloseCode> closeCode() const override { return closeCode_; }
  const std::string& name() const override { return name_; }
  const boost::asio::ip::address& address() const override { return address_; }

 private:
  SecureStream& stream() { return ws_.next_layer(); }
  beast::tcp_stream& tcp() { return stream().next_layer(); }

  void onHandshake(error_code error) {
    if (!error) return readRequest();
    TERMINAL_LOG(logger(), Debug, "{}: no TLS: {}", name_, error.message());
    finish();
  }

  void readRequest() { http::async_read(stream(), buffer_, request_, handler(&WebSocketSession::onRequest)); }

  void onRequest(error_code error, size_t /*bytes*/) {
    if (closing_) return finish();
    if (error && error != http::error::unexpected_body) return onBadRequest(error);
    HttpRequest head = headOf(request_.get());
    head.upgrades = head.upgrades && !error;
    const std::optional<Page> page = owner_.onRequestHead(*this, head);
    page ? writePage(*page) : upgrade();
  }

  void onBadRequest(const error_code& error) {
    const bool isGone = error == http::error::end_of_stream || error == http::error::partial_message;
    if (isGone || error.category() != make_error_code(http::error::bad_method).category()) return finish();
    writePage({.status = 400, .body = fmt::format("This is no HTTP request: {}.\n", error.message())});
  }

  void writePage(const Page& page) {
    http::response<http::string_body>& response = response_.emplace(http::status(page.status), 11);
    response.set(http::field::content_type, page.contentType);
    for (const auto& [name, value] : kPageHeaders) response.set(name, value);
    response.keep_alive(false);
    response.body() = page.body;
    response.prepare_payload();
    tcp().expires_after(limits_.login);
    http::async_write(stream(), response, handler(&WebSocketSession::onPage));
  }

  void onPage(error_code error, size_t /*bytes*/) {
    if (error) return finish();
    finishAfter(kCloseTime);  // the stream's own deadline ends with the last byte written
    stream().shutdown(beast::role_type::server, handler(&WebSocketSession::onShutdown));
  }

  void onShutdown(error_code /*error*/) { finish(); }

  void upgrade() {
    tcp().expires_never();
    ws_.set_option(websocket::stream_base::timeout{limits_.login, limits_.idle, true});
    ws_.read_message_max(limits_.maxFrameBytes);
    ws_.auto_fragment(false);
    buffer_.clear();
    ws_.async_accept(request_.get(), handler(&WebSocketSession::onAccept));
  }

  void onAccept(error_code error) {
    if (error || closing_) return finish();
    startTimer(limits_.login, [](WebSocketSession& session) { session.close(CloseCode::NoLogin, "no login in time"); });
    read();
  }

  void read() { ws_.async_read(buffer_, handler(&WebSocketSession::onRead)); }

  void onRead(error_code error, size_t /*bytes*/) {
    if (error) return onReadError(error);
    if (!closing_ && !ws_.got_text()) close(CloseCode::UnsupportedData, "only text frames are taken");
    if (!closing_) owner_.onFrame(*this, {static_cast<const char*>(buffer_.cdata().data()), buffer_.size()});
    buffer_.clear();
    read();
  }

  void onReadError(const error_code& error) {
    if (error != websocket::error::closed && !closing_) {
      TERMINAL_LOG(logger(), Info, "{} is dropped: {}", name_, error.message());
    }
    finish();
  }

  void write() {
    ws_.text(true);
    ws_.async_write(boost::asio::buffer(*queue_.front()), handler(&WebSocketSession::onWrite));
  }

  void onWrite(error_code error, size_t /*bytes*/) {
    if (error) return finish();
    queuedBytes_ -= queue_.front()->size();
    queue_.pop_front();
    if (!queue_.empty()) return write();
    if (closing_) writeClose();
  }

  // Without the message on its way, which may be a long list that a fast phone takes as fast as it can.
  size_t waitingBytes() const { return queue_.empty() ? 0 : queuedBytes_ - queue_.front()->size(); }

  void writeClose() { ws_.async_close(reason_, handler(&WebSocketSession::onCloseWritten)); }
  void onCloseWritten(error_code /*error*/) { finish(); }

  // What waits is lost with the connection; only the message on its way can still end.
  void dropSlowPeer() {
    TERMINAL_LOG(logger(), Warn, "{} reads too slowly: {} messages with {} bytes wait", name_, queue_.size(),
                 queuedBytes_);
    queue_.resize(1);
    queuedBytes_ = queue_.front()->size();
    close(CloseCode::TooSlow, "too slow");
  }

  void finishAfter(std::chrono::milliseconds time) {
    startTimer(time, [](WebSocketSession& session) { session.finish(); });
  }

  template <typename Action>
  void startTimer(std::chrono::milliseconds time, Action action) {
    timer_.expires_after(time);
    timer_.async_wait([self = shared_from_this(), action](const error_code& error) {
      if (!error) action(*self);
    });
  }

  void finish() {
    if (finished_) return;
    finished_ = true;
    closing_ = true;
    timer_.cancel();
    tcp().close();
    owner_.onClosed(*this);
  }

  const boost::asio::ip::address address_;
  websocket::stream<SecureStream, false> ws_;
  boost::asio::steady_timer timer_;  // the login's, then the close's
  std::string name_;
  ISessionOwner& owner_;
  const SessionLimits limits_;
  beast::flat_buffer buffer_;
  http::request_parser<http::empty_body> request_;
  std::optional<http::response<http::string_body>> response_;
  std::deque<std::shared_ptr<const std::string>> queue_;  // the first is on its way
  size_t queuedBytes_ = 0;
  websocket::close_reason reason_;
  std::optional<CloseCode> closeCode_;
  bool admitted_ = false;
  bool closing_ = false;
  bool finished_ = false;
};

}  // namespace

std::shared_ptr<Session> makeSession(boost::asio::ip::tcp::socket socket, boost::asio::ssl::context* tls,
                                     std::string name, ISessionOwner& owner, const SessionLimits& limits) {
  return std::make_shared<WebSocketSession>(std::move(socket), tls, std::move(name), owner, limits);
}

}  // namespace orvane::terminal
