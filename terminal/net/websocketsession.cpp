#include "terminal/net/websocketsession.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <chrono>
#include <deque>
#include <optional>
#include <utility>

#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kCloseTime{3000};
constexpr std::chrono::milliseconds kStopTime{500};  // shorter: the terminal's end waits for it

constexpr int kIdleTimes = 4;  // the idle time, until a session without long messages gives up its compressor

using WebSocket = websocket::stream<SecureStream&, true>;

// Beast 1.81 keeps a compressor for as long as its stream, and has no call to free it. The stream's members are
// private, but an explicit instantiation may name them.
auto& implementationOf(WebSocket& stream);

template <auto Member>
struct PrivateMember {
  friend auto& implementationOf(WebSocket& stream) { return *(stream.*Member); }
};
template struct PrivateMember<&WebSocket::impl_>;

// Between two messages: the next one that is compressed begins with an empty window, as any client understands.
void freeCompressor(WebSocket& stream) {
  if (const auto& agreed = implementationOf(stream).pmd_) agreed->zo.clear();
}

// Of a text frame.
struct Part {
  Session::Text text;
  bool isLast = true;
};

class WebSocketSession final : public Session,
                               public Connection,
                               public std::enable_shared_from_this<WebSocketSession> {
  // A completion handler that keeps the session alive until it ran.
  template <typename... Arguments>
  auto handler(void (WebSocketSession::*operation)(Arguments...)) {
    return beast::bind_front_handler(operation, shared_from_this());
  }

 public:
  WebSocketSession(std::unique_ptr<SecureStream> stream, Remote remote, ISessionOwner& sessions,
                   IConnectionOwner& owner, CompressionMemory& memory, const NetLimits& limits)
      : stream_(std::move(stream)),
        ws_(*stream_),
        timer_(ws_.get_executor()),
        remote_(std::move(remote)),
        sessions_(sessions),
        owner_(owner),
        limits_(limits),
        compression_(memory, kIdleTimes * limits.idle) {}

  void accept(UpgradeRequest request) {
    request_ = std::move(request);
    // Beast's own idle limit is off: to it, a client that reads a long list slowly is silent.
    ws_.set_option(websocket::stream_base::timeout{limits_.head, websocket::stream_base::none(), false});
    ws_.read_message_max(limits_.maxFrameBytes);
    ws_.auto_fragment(false);
    const beast::string_view offer = request_[beast::http::field::sec_websocket_extensions];
    ws_.set_option(compression_.agree({offer.data(), offer.size()}));
    ws_.async_accept(request_, handler(&WebSocketSession::onAccept));
  }

  void sendPart(Text text, bool isLast) override {
    if (closing_) return;
    if (waitingBytes() > limits_.maxQueuedBytes) return dropSlowClient();
    queuedBytes_ += text->size();
    queue_.push_back({std::move(text), isLast});
    if (queue_.size() == 1) write();
    account();
  }

  void close(CloseCode code, std::string_view reason) override {
    if (closing_) return;
    TERMINAL_LOG(gatewayLogger(), Info, "{} is closed with {}: {}", name(), static_cast<unsigned>(code), reason);
    closing_ = true;
    closeCode_ = code;
    reason_.code = static_cast<uint16_t>(code);
    reason_.reason.assign(reason.data(), reason.size());
    finishAfter(code == CloseCode::GoingAway ? kStopTime : kCloseTime);
    if (queue_.empty()) writeClose();
  }

  void stop() override {
    constexpr std::string_view kReason = "the terminal stops";
    if (closing_ && !finished_) return finishAfter(kStopTime);
    opened_ ? close(CloseCode::GoingAway, kReason) : cut(kReason);
  }

  void cut(std::string_view reason) override {
    if (abandoned_) return;
    TERMINAL_LOG(gatewayLogger(), Info, "{} is cut off: {}", name(), reason);
    abandon();
  }

  void cutBacklog() override {
    TERMINAL_LOG(gatewayLogger(), Warn,
                 "{} reads too slowly: of all that waits for clients, more than --max-backlog allows, its {} bytes are "
                 "the most",
                 name(), queuedBytes_);
    if (!closing_) closeCode_ = CloseCode::TooSlow;
    abandon();
  }

  size_t backlogBytes() const override { return accountedBytes_; }

  void admit() override { admitted_ = true; }
  bool mayGiveWay() const override { return !abandoned_ && (!admitted_ || closing_); }
  bool isClosing() const override { return closing_; }
  std::optional<CloseCode> closeCode() const override { return closeCode_; }
  const std::string& name() const override { return remote_.name; }
  const std::string& address() const override { return remote_.address; }
  const std::string& network() const override { return remote_.network; }

 private:
  void onAccept(error_code error) {
    if (error || closing_) return finish();
    opened_ = true;
    heard_ = Clock::now();
    watch();
    sessions_.onOpened(shared_from_this());
    read();
  }

  void read() { ws_.async_read(buffer_, handler(&WebSocketSession::onRead)); }

  void onRead(error_code error, size_t /*bytes*/) {
    if (error) return onReadError(error);
    if (!closing_ && !ws_.got_text()) close(CloseCode::UnsupportedData, "only text frames are taken");
    if (!closing_) sessions_.onFrame(*this, {static_cast<const char*>(buffer_.cdata().data()), buffer_.size()});
    buffer_.clear();
    read();
  }

  void onReadError(const error_code& error) {
    if (error != websocket::error::closed && !closing_) {
      TERMINAL_LOG(gatewayLogger(), Info, "{} is dropped: {}", name(), error.message());
    }
    finish();
  }

  void write() {
    writeBegan_ = Clock::now();
    ws_.text(true);
    const Part& part = queue_.front();
    if (!isInMessage_) ws_.compress(compression_.begin(part.text->size(), writeBegan_));
    isInMessage_ = !part.isLast;
    ws_.async_write_some(part.isLast, boost::asio::buffer(*part.text), handler(&WebSocketSession::onWrite));
  }

  void onWrite(error_code error, size_t /*bytes*/) {
    if (error) return finish();
    const size_t size = queue_.front().text->size();
    queuedBytes_ -= size;
    queue_.pop_front();
    account();
    if (!queue_.empty()) {
      write();
    } else if (closing_) {
      return writeClose();
    }
    if (!closing_) sessions_.onSent(*this, size);
  }

  // Reports the backlog, which may end this session.
  void account() {
    const size_t before = std::exchange(accountedBytes_, abandoned_ ? 0 : queuedBytes_);
    if (before != accountedBytes_) owner_.onBacklog(before, accountedBytes_);
  }

  // Checks the client at intervals, until the session is closing.
  void watch() {
    constexpr int kLooks = 8;  // in the idle time
    timer_.expires_after(limits_.idle / kLooks);
    timer_.async_wait([self = shared_from_this()](const error_code& cancelled) {
      if (cancelled || self->closing_) return;
      self->queue_.empty() ? self->checkSilence() : self->checkProgress();
      self->endIdleCompression();
      if (!self->closing_) self->watch();
    });
  }

  void endIdleCompression() {
    if (queue_.empty() && compression_.endIdle(Clock::now())) freeCompressor(ws_);
  }

  // Pongs show only that the peer's machine is alive, so a client must also accept what it is sent.
  void checkProgress() {
    const Clock::time_point now = Clock::now();
    heard_ = now;  // no ping gets past the frame that is being written
    if (now - std::max(writeBegan_, stream_->lastWritten()) >= limits_.idle) dropSlowClient();
  }

  void checkSilence() {
    heard_ = std::max(heard_, stream_->lastRead());
    const auto silence = Clock::now() - heard_;
    if (silence >= limits_.idle) return cut("it is silent");
    if (silence < limits_.idle / 2 || pinging_) return;
    pinging_ = true;
    ws_.async_ping({}, handler(&WebSocketSession::onPingWritten));
  }

  void onPingWritten(error_code /*error*/) { pinging_ = false; }  // an error ends the reading, too

  // The frame that is being written does not count: it may be a long list, which takes even a fast client some time to
  // read.
  size_t waitingBytes() const { return queue_.empty() ? 0 : queuedBytes_ - queue_.front().text->size(); }

  void writeClose() { ws_.async_close(reason_, handler(&WebSocketSession::onCloseWritten)); }

  // The client's answer to the close frame, or its absence, makes no difference.
  void onCloseWritten(error_code /*error*/) { finish(); }

  // The backlog is lost with the connection; only the frame that is being written can still end.
  void dropSlowClient() {
    TERMINAL_LOG(gatewayLogger(), Warn, "{} reads too slowly: {} messages with {} bytes wait", name(), queue_.size(),
                 queuedBytes_);
    queue_.resize(1);
    queuedBytes_ = queue_.front().text->size();
    account();
    close(CloseCode::TooSlow, "too slow");
  }

  // Cuts the client off as soon as the running operation is through.
  void abandon() {
    closing_ = true;
    abandoned_ = true;
    account();
    boost::asio::post(ws_.get_executor(), [self = shared_from_this()] { self->finish(); });
  }

  void finishAfter(std::chrono::milliseconds time) {
    timer_.expires_after(time);
    timer_.async_wait([self = shared_from_this()](const error_code& cancelled) {
      if (!cancelled) self->finish();
    });
  }

  void finish() {
    if (finished_) return;
    finished_ = true;
    closing_ = true;
    abandoned_ = true;
    account();
    timer_.cancel();
    stream_->next_layer().close();
    if (opened_) sessions_.onClosed(*this);
    owner_.onEnded(*this);
  }

  const std::unique_ptr<SecureStream> stream_;
  WebSocket ws_;
  boost::asio::steady_timer timer_;  // the watch's, then the close's
  const Remote remote_;
  ISessionOwner& sessions_;
  IConnectionOwner& owner_;
  const NetLimits limits_;
  SessionCompression compression_;
  UpgradeRequest request_;
  beast::flat_buffer buffer_;
  std::deque<Part> queue_;    // the first is being written
  bool isInMessage_ = false;  // the part that is being written is not its message's last
  size_t queuedBytes_ = 0;
  size_t accountedBytes_ = 0;  // that the owner knows of
  Clock::time_point writeBegan_;
  Clock::time_point heard_;
  websocket::close_reason reason_;
  std::optional<CloseCode> closeCode_;
  bool opened_ = false;
  bool admitted_ = false;
  bool pinging_ = false;  // a ping is not written yet
  bool closing_ = false;
  bool abandoned_ = false;  // nothing more is written
  bool finished_ = false;
};

}  // namespace

std::shared_ptr<Connection> openWebSocket(std::unique_ptr<SecureStream> stream, UpgradeRequest request, Remote remote,
                                          ISessionOwner& sessions, IConnectionOwner& owner, CompressionMemory& memory,
                                          const NetLimits& limits) {
  auto session =
      std::make_shared<WebSocketSession>(std::move(stream), std::move(remote), sessions, owner, memory, limits);
  session->accept(std::move(request));
  return session;
}

}  // namespace orvane::terminal
