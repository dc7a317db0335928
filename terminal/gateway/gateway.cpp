#include "terminal/gateway/gateway.h"

#include <boost/asio/post.hpp>
#include <stdexcept>
#include <utility>
#include <variant>

#include "terminal/gateway/bodycheck.h"
#include "terminal/gateway/tokens.h"
#include "terminal/logging.h"

namespace orvane::terminal {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr size_t kMaxSessions = 256;
constexpr size_t kMaxWaiting = 1024;  // requests of one connection
constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::string_view kLogin = "login";

const log4cxx::LoggerPtr& logger() {
  static const log4cxx::LoggerPtr instance = log4cxx::Logger::getLogger("Gateway");
  return instance;
}

void sendText(Session& session, std::string text) {
  session.send(std::make_shared<const std::string>(std::move(text)));
}

void refuse(Session& session, std::string_view id, std::string_view topic, std::string_view why) {
  TERMINAL_LOG(logger(), Debug, "{}: {}", session.name(), why);
  sendText(session, writeFailure(id, topic, why));
}

}  // namespace

Gateway::Gateway(GatewayOptions options) : options_(std::move(options)) {
  const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), options_.port);
  try {
    acceptor_ = tcp::acceptor(io_, endpoint);
    port_ = acceptor_.local_endpoint().port();
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error(fmt::format(
        "cannot listen on 127.0.0.1:{}: {}; end the program that holds the port, or choose another with --port",
        options_.port, error.code().message()));
  }
}

Gateway::~Gateway() { stop(); }

void Gateway::start(Receive receive) {
  receive_ = std::move(receive);
  accept();
  thread_ = std::thread([this] { io_.run(); });
  TERMINAL_LOG(logger(), Info, "listening on 127.0.0.1:{}", port_);
}

void Gateway::stop() {
  if (!thread_.joinable()) return;
  asio::post(io_, [this] { closeAll(); });
  thread_.join();
  TERMINAL_LOG(logger(), Info, "stopped");
}

void Gateway::deliver(const MobileMessage& message) {
  asio::post(io_, [this, message] { onMessage(message); });
}

void Gateway::accept() {
  acceptor_.async_accept([this](const error_code& error, tcp::socket socket) { onAccept(error, std::move(socket)); });
}

void Gateway::onAccept(const error_code& error, tcp::socket socket) {
  if (!acceptor_.is_open()) return;
  if (error) return retryAccept(error.message());
  if (peers_.size() >= kMaxSessions) {
    TERMINAL_LOG(logger(), Warn, "a connection is refused: {} are open", peers_.size());
  } else {
    const auto session =
        makeSession(std::move(socket), fmt::format("phone {}", ++connections_), *this, options_.limits);
    peers_.emplace(session.get(), Peer{session});
    session->start();
  }
  accept();
}

// Without the pause a process that is out of descriptors would spin here.
void Gateway::retryAccept(const std::string& reason) {
  TERMINAL_LOG(logger(), Warn, "cannot take a connection: {}", reason);
  acceptTimer_.expires_after(kAcceptPause);
  acceptTimer_.async_wait([this](const error_code& error) {
    if (!error) accept();
  });
}

void Gateway::onFrame(Session& session, std::string_view text) {
  const auto read = readFrame(text);
  const auto* frame = std::get_if<Frame>(&read);
  if (frame != nullptr && frame->topic == kLogin) return onLogin(session, *frame);
  if (frame != nullptr && session.isAdmitted()) return onRequest(session, *frame);
  if (const auto* error = std::get_if<FrameError>(&read)) {
    refuse(session, error->id, error->topic, error->message);
  } else {
    refuse(session, frame->id, frame->topic, R"(log in first: {"topic": "login", "token": ...})");
  }
  if (!session.isAdmitted()) session.close(CloseCode::NoLogin, "the first message must be a login");
}

void Gateway::onLogin(Session& session, const Frame& frame) {
  if (!sameToken(options_.token, frame.token)) {
    refuse(session, frame.id, kLogin, "wrong token: take it from the link that the terminal printed");
    return session.close(CloseCode::NoLogin, "wrong token");
  }
  TERMINAL_LOG(logger(), Info, "{} is logged in", session.name());
  session.admit();
  sendText(session, writeFailure(frame.id, kLogin, {}));
}

void Gateway::onRequest(Session& session, const Frame& frame) {
  if (const std::string fault = findBodyFault(frame.topic, frame.body); !fault.empty()) {
    return refuse(session, frame.id, frame.topic, fault);
  }
  Peer& peer = peers_.at(&session);
  if (peer.waiting >= kMaxWaiting) {
    return refuse(session, frame.id, frame.topic,
                  fmt::format("{} requests wait for their reply already", peer.waiting));
  }
  const int64_t requestId = ++lastRequestId_;
  if (!receive_(requestId, frame.terminalType, frame.topic, std::string(frame.body))) {
    return refuse(session, frame.id, frame.topic, "the terminal takes no requests now: this one was not taken");
  }
  pending_.emplace(requestId, Pending{&session, std::string(frame.id)});
  ++peer.waiting;
}

void Gateway::onClosed(Session& session) {
  TERMINAL_LOG(logger(), Debug, "{} is gone", session.name());
  std::erase_if(pending_, [&](const auto& entry) { return entry.second.session == &session; });
  peers_.erase(&session);
}

void Gateway::onMessage(const MobileMessage& message) {
  if (message.requestId == kNoRequestId) return push(message);
  const auto pending = pending_.find(message.requestId);
  if (pending == pending_.end()) {
    TERMINAL_LOG(logger(), Debug, "nobody waits for the reply {} to {}", message.requestId, message.topic);
    return;
  }
  const Pending request = std::move(pending->second);
  pending_.erase(pending);
  --peers_.at(request.session).waiting;
  sendText(*request.session, writeAnswer(request.id, message));
}

void Gateway::push(const MobileMessage& message) {
  const auto text = std::make_shared<const std::string>(writePush(message));
  for (const auto& [session, peer] : peers_) {
    if (session->isAdmitted()) session->send(text);
  }
}

void Gateway::closeAll() {
  error_code ignored;
  acceptor_.close(ignored);
  acceptTimer_.cancel();
  for (const auto& [session, peer] : peers_) session->close(CloseCode::GoingAway, "the terminal stops");
}

}  // namespace orvane::terminal
