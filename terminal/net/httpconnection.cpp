#include "terminal/net/httpconnection.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <optional>
#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

namespace beast = boost::beast;
namespace http = beast::http;
using boost::system::error_code;

constexpr std::chrono::milliseconds kShutdownTime{3000};

// A page loads nothing from elsewhere, and no other page can frame it.
constexpr const char* kContentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; connect-src 'self'; "
    "manifest-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

// Browsers ignore it for an IP address, and while they do not trust the certificate.
constexpr const char* kTlsForAYear = "max-age=31536000";

std::string_view view(beast::string_view text) { return {text.data(), text.size()}; }

HttpRequest headOf(const UpgradeRequest& request) {
  const std::string_view target = view(request.target());
  return {.method = view(request.method_string()),
          .path = target.substr(0, target.find('?')),
          .host = view(request[http::field::host]),
          .origin = view(request[http::field::origin]),
          .authorization = view(request[http::field::authorization]),
          .acceptEncoding = view(request[http::field::accept_encoding]),
          .ifNoneMatch = view(request[http::field::if_none_match]),
          .network = {}};
}

// The content policy matters to documents only, and is longer than some files. A page with an ETag is stored, but asked
// about each time.
void setPageHeaders(http::fields& response, const Page& page) {
  response.set(http::field::content_type, page.contentType);
  response.set("X-Content-Type-Options", "nosniff");
  response.set("Referrer-Policy", "no-referrer");
  if (std::string_view(page.contentType).starts_with("text/html")) {
    response.set("Content-Security-Policy", kContentPolicy);
  }
  response.set(http::field::cache_control, page.etag.empty() ? "no-store" : "no-cache");
  if (page.etag.empty()) return;
  response.set(http::field::etag, page.etag);
  response.set(http::field::vary, "Accept-Encoding");
  if (!page.encoding.empty()) response.set(http::field::content_encoding, page.encoding);
}

class HttpConnection final : public Connection, public std::enable_shared_from_this<HttpConnection> {
  // A completion handler that keeps the connection alive until it ran.
  template <typename... Arguments>
  auto handler(void (HttpConnection::*operation)(Arguments...)) {
    return beast::bind_front_handler(operation, shared_from_this());
  }

 public:
  HttpConnection(std::unique_ptr<SecureStream> stream, Remote remote, IConnectionOwner& owner, const NetLimits& limits)
      : stream_(std::move(stream)),
        timer_(stream_->get_executor()),
        remote_(std::move(remote)),
        owner_(owner),
        limits_(limits) {}

  void start() {
    limit(limits_.head);
    if (!stream_->isSecure()) return readRequest();
    stream_->handshake(boost::asio::ssl::stream_base::server, handler(&HttpConnection::onHandshake));
  }

  void stop() override { cut("the terminal stops"); }

  void cut(std::string_view reason) override {
    if (ending_) return;
    ending_ = true;
    TERMINAL_LOG(gatewayLogger(), Info, "{} is cut off: {}", remote_.name, reason);
    boost::asio::post(timer_.get_executor(), [self = shared_from_this()] { self->finish(); });
  }

  bool mayGiveWay() const override { return !ending_; }
  size_t backlogBytes() const override { return 0; }  // a page is short, and its writing has a limit
  void cutBacklog() override {}

 private:
  // Ends the connection then, unless the timer is cancelled or another limit set before.
  void limit(std::chrono::milliseconds time) {
    timer_.expires_after(time);
    timer_.async_wait([self = shared_from_this()](const error_code& cancelled) {
      if (!cancelled && self->stream_ != nullptr) self->finish();
    });
  }

  void onHandshake(error_code error) {
    if (!error) return readRequest();
    TERMINAL_LOG(gatewayLogger(), Debug, "{}: no TLS: {}", remote_.name, error.message());
    finish();
  }

  void readRequest() { http::async_read(*stream_, buffer_, request_, handler(&HttpConnection::onRequest)); }

  void onRequest(error_code error, size_t /*bytes*/) {
    if (ending_) return finish();
    timer_.cancel();
    if (error && error != http::error::unexpected_body) return onBadRequest(error);
    HttpRequest head = headOf(request_.get());
    head.isUpgrade = !error && beast::websocket::is_upgrade(request_.get());
    head.isLoopback = remote_.isLoopback;
    head.network = remote_.network;
    owner_.onRequestHead(head, [self = shared_from_this()](const std::optional<Page>& page) { self->onAnswer(page); });
  }

  void onAnswer(const std::optional<Page>& page) {
    if (ending_) return;  // cut off while the answer was made
    if (page) return writePage(*page);
    ending_ = true;
    owner_.onUpgrade(*this, std::move(stream_), request_.release());
  }

  void onBadRequest(const error_code& error) {
    const bool isGone = error == http::error::end_of_stream || error == http::error::partial_message;
    if (isGone || error.category() != make_error_code(http::error::bad_method).category()) return finish();
    writePage({.status = 400, .body = fmt::format("This is no HTTP request: {}.\n", error.message())});
  }

  void writePage(const Page& page) {
    http::response<http::string_body>& response = response_.emplace(http::status(page.status), 11);
    setPageHeaders(response, page);
    if (stream_->isSecure()) response.set(http::field::strict_transport_security, kTlsForAYear);
    response.keep_alive(false);
    response.body() = page.body;
    if (page.status != 304) response.prepare_payload();  // a length would be that of the page the client has
    limit(limits_.head);
    http::async_write(*stream_, response, handler(&HttpConnection::onPage));
  }

  void onPage(error_code error, size_t /*bytes*/) {
    if (error || ending_) return finish();
    limit(kShutdownTime);
    stream_->shutdown(beast::role_type::server, handler(&HttpConnection::onShutdown));
  }

  // Whether the shutdown succeeded makes no difference: the socket is closed either way.
  void onShutdown(error_code /*error*/) { finish(); }

  void finish() {
    if (finished_) return;
    finished_ = true;
    ending_ = true;
    timer_.cancel();
    stream_->next_layer().close();
    owner_.onEnded(*this);
  }

  std::unique_ptr<SecureStream> stream_;  // null after an upgrade
  boost::asio::steady_timer timer_;
  const Remote remote_;
  IConnectionOwner& owner_;
  const NetLimits limits_;
  beast::flat_buffer buffer_;
  http::request_parser<http::empty_body> request_;
  std::optional<http::response<http::string_body>> response_;
  bool ending_ = false;
  bool finished_ = false;
};

}  // namespace

std::shared_ptr<Connection> openHttpConnection(std::unique_ptr<SecureStream> stream, Remote remote,
                                               IConnectionOwner& owner, const NetLimits& limits) {
  auto connection = std::make_shared<HttpConnection>(std::move(stream), std::move(remote), owner, limits);
  connection->start();
  return connection;
}

}  // namespace orvane::terminal
