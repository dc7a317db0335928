#include "terminal/gateway/session.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <deque>
#include <optional>
#include <utility>

#include "terminal/gateway/pages.h"
#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using boost::system::error_code;

constexpr std::string_view kSocketPath = "/ws";
constexpr std::chrono::milliseconds kCloseTime{3000};
constexpr std::chrono::milliseconds kAtOnce{0};

const log4cxx::LoggerPtr& logger() {
  static const log4cxx::LoggerPtr instance = log4cxx::Logger::getLogger("Gateway");
  return instance;
}

std::string_view pathOf(beast::string_view target) {
  const std::string_view text(target.data(), target.size());
  return text.substr(0, text.find('?'));
}

class WebSocketSession final : public Session, public std::enable_shared_from_this<WebSocketSession> {
  // A completion handler that keeps the session alive until it ran.
  template <typename... Arguments>
  auto handler(void (WebSocketSession::*operation)(Arguments...)) {
    return beast::bind_front_handler(operation, shared_from_this());
  }

 public:
  WebSocketSession(boost::asio::ip::tcp::socket socket, std::string name, ISessionOwner& owner,
                   const SessionLimits& limits)
      : ws_(std::move(socket)), timer_(ws_.get_executor()), name_(std::move(name)), owner_(owner), limits_(limits) {}

  void start() override {
    error_code ignored;
    stream().socket().set_option(boost::asio::ip::tcp::no_delay(true), ignored);  // a push must not hold up the reply
    stream().expires_after(limits_.login);
    http::async_read(stream(), buffer_, request_, handler(&WebSocketSession::onRequest));
  }

  void send(std::shared_ptr<const std::string> text) override {
    if (closing_) return;
    if (!queue_.empty() && queuedBytes_ + text->size() > limits_.maxQueuedBytes) return dropSlowPeer();
    queuedBytes_ += text->size();
    queue_.push_back(std::move(text));
    if (queue_.size() == 1) write();
  }

  void close(CloseCode code, std::string_view reason) override {
    if (closing_) return;
    TERMINAL_LOG(logger(), Info, "{} is closed with {}: {}", name_, static_cast<unsigned>(code), reason);
    closing_ = true;
    reason_.code = static_cast<uint16_t>(code);
    reason_.reason.assign(reason.data(), reason.size());
    // Before the handshake there is nobody to say it to. The owner hears of the end later, never from within this call.
    startTimer(ws_.is_open() ? kCloseTime : kAtOnce, [](WebSocketSession& session) { session.finish(); });
    if (ws_.is_open() && queue_.empty()) writeClose();
  }

  void admit() override {
    admitted_ = true;
    if (!closing_) timer_.cancel();
  }

  bool isAdmitted() const override { return admitted_; }
  const std::string& name() const override { return name_; }

 private:
  beast::tcp_stream& stream() { return ws_.next_layer(); }

  void onRequest(error_code error, size_t /*bytes*/) {
    if (error && error != http::error::unexpected_body) return finish();
    const bool upgrades = !error && websocket::is_upgrade(request_.get());
    if (upgrades && pathOf(request_.get().target()) == kSocketPath) return upgrade();
    writePage();
  }

  void writePage() {
    const beast::string_view method = request_.get().method_string();
    const Page page = findPage({method.data(), method.size()}, pathOf(request_.get().target()));
    http::response<http::string_body>& response = response_.emplace(http::status(page.status), 11);
    response.set(http::field::content_type, page.contentType);
    response.set(http::field::cache_control, "no-store");
    response.keep_alive(false);
    response.body() = page.body;
    response.prepare_payload();
    http::async_write(stream(), response, handler(&WebSocketSession::onPage));
  }

  void onPage(error_code /*error*/, size_t /*bytes*/) {
    error_code ignored;
    stream().socket().shutdown(boost::asio::socket_base::shutdown_send, ignored);
    finish();
  }

  void upgrade() {
    stream().expires_never();
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
    stream().close();
    owner_.onClosed(*this);
  }

  websocket::stream<beast::tcp_stream> ws_;
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
  bool admitted_ = false;
  bool closing_ = false;
  bool finished_ = false;
};

}  // namespace

std::shared_ptr<Session> makeSession(boost::asio::ip::tcp::socket socket, std::string name, ISessionOwner& owner,
                                     const SessionLimits& limits) {
  return std::make_shared<WebSocketSession>(std::move(socket), std::move(name), owner, limits);
}

}  // namespace orvane::terminal
