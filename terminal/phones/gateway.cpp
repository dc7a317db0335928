#include "terminal/phones/gateway.h"

#include <algorithm>
#include <boost/asio/ip/host_name.hpp>
#include <boost/asio/ip/network_v6.hpp>
#include <boost/asio/post.hpp>
#include <stdexcept>
#include <utility>
#include <variant>

#include "terminal/logging.h"
#include "terminal/phones/bodycheck.h"

namespace orvane::terminal {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr size_t kMaxSessions = 256;
constexpr size_t kMaxOfToken = 192;                           // connections, so that others find room
constexpr size_t kMaxWaiting = 1024;                          // requests of one connection
constexpr size_t kMaxWaitingBytes = size_t{8} * 1024 * 1024;  // of a token's requests before the library has them
constexpr size_t kMaxHanded = 32;      // requests that the library has: enough to keep it busy, few enough to wait for
constexpr size_t kHandedBytes = 4096;  // of theirs, after which no more are handed on: a long one is long work
constexpr size_t kMaxOverruns = 1024;  // requests of one connection that were refused before half of those had a reply
constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::chrono::seconds kLongAnswer{10};
constexpr std::chrono::seconds kWatchPeriod{1};
constexpr std::chrono::seconds kPenalty{1};  // that a wrong login waits for its answer
constexpr std::string_view kLogin = "login";
constexpr std::string_view kSocketPath = "/ws";
constexpr std::string_view kBearer = "Bearer ";

const log4cxx::LoggerPtr& logger() {
  static const log4cxx::LoggerPtr instance = log4cxx::Logger::getLogger("Gateway");
  return instance;
}

void sendText(Session& session, std::string text) {
  session.send(std::make_shared<const std::string>(std::move(text)));
}

asio::ip::address parseAddress(const std::string& text) {
  error_code error;
  asio::ip::address address = asio::ip::make_address(text, error);
  if (error) throw std::runtime_error(fmt::format("--listen must be an IP address, not {}", text));
  return address;
}

// What stands for all addresses leads nowhere from elsewhere; the machine's name does.
std::string urlHost(const asio::ip::address& address) {
  error_code error;
  if (address.is_unspecified()) return asio::ip::host_name(error);
  return address.is_v6() ? '[' + address.to_string() + ']' : address.to_string();
}

// Whom to count as one: a host of IPv6 has all addresses of its network of 64 bits.
std::string networkOf(const asio::ip::address& address) {
  if (address.is_v4()) return address.to_string();
  return asio::ip::network_v6(address.to_v6(), 64).canonical().to_string();
}

std::string secondsText(std::chrono::steady_clock::duration time) {
  return fmt::format("{:.1f} s", std::chrono::duration<double>(time).count());
}

std::string_view adviceFor(const error_code& error) {
  using boost::system::errc::address_not_available;
  if (error == asio::error::address_in_use) {
    return "; end the program that holds the port, or choose another with --port";
  }
  if (error == asio::error::access_denied) return "; choose a port above 1023 with --port";
  return error == address_not_available ? "; choose an address of this machine with --listen" : "";
}

OriginPolicy::IsOwnName certifiedNames(const std::shared_ptr<asio::ssl::context>& tls) {
  if (tls == nullptr) return {};
  return [tls](const std::string& name) { return isCertified(*tls, name); };
}

}  // namespace

Gateway::Gateway(GatewayOptions options)
    : options_(std::move(options)),
      tls_(options_.tls ? makeServerTls(*options_.tls) : nullptr),
      origins_(tls_ != nullptr, options_.allowedOrigins, certifiedNames(tls_)),
      keeper_(options_.dataDir) {
  const asio::ip::address address = parseAddress(options_.address);
  if (!address.is_loopback() && tls_ == nullptr) {
    throw std::runtime_error(fmt::format(
        "beyond this machine, on {}, the terminal listens with TLS only: add --tls-self, or --tls-cert and --tls-key",
        options_.address));
  }
  try {
    acceptor_ = tcp::acceptor(io_, tcp::endpoint(address, options_.port));
    port_ = acceptor_.local_endpoint().port();
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error(fmt::format("cannot listen on {}:{}: {}{}", options_.address, options_.port,
                                         error.code().message(), adviceFor(error.code())));
  }
}

Gateway::~Gateway() { stop(); }

std::string Gateway::url() const {
  return fmt::format("{}://{}:{}", tls_ ? "https" : "http", urlHost(parseAddress(options_.address)), port_);
}

void Gateway::start(Receive receive, IsTaking isTaking) {
  receive_ = std::move(receive);
  isTaking_ = std::move(isTaking);
  accept();
  watch();
  thread_ = std::thread([this] { io_.run(); });
  TERMINAL_LOG(logger(), Info, "listening at {}", url());
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
  if (makeRoom()) {
    const auto session =
        makeSession(std::move(socket), tls_.get(), fmt::format("phone {}", ++connections_), *this, options_.limits);
    Peer& peer = peers_[session.get()];
    peer.session = session;
    peer.number = connections_;
    session->start();
  } else {
    TERMINAL_LOG(logger(), Warn, "a connection is refused: {} are open", peers_.size());
    metrics_.countRefusal(Refusal::Connection);
  }
  accept();
}

// Where all places are taken, the oldest connection without a login gives way: who opens many and says nothing keeps
// no phone out.
bool Gateway::makeRoom() {
  if (peers_.size() < kMaxSessions) return true;
  Peer* oldest = nullptr;
  for (auto& [session, peer] : peers_) {
    const bool mayGo = !session->isAdmitted() && !peer.givesWay;
    if (mayGo && (oldest == nullptr || peer.number < oldest->number)) oldest = &peer;
  }
  if (oldest == nullptr) return false;
  metrics_.countRefusal(Refusal::Connection);
  oldest->givesWay = true;
  oldest->session->cut("it gives way to a new one");
  return true;
}

// Without the pause a process that is out of descriptors would spin here.
void Gateway::retryAccept(const std::string& reason) {
  TERMINAL_LOG(logger(), Warn, "cannot take a connection: {}", reason);
  acceptTimer_.expires_after(kAcceptPause);
  acceptTimer_.async_wait([this](const error_code& error) {
    if (!error) accept();
  });
}

std::optional<Page> Gateway::onRequestHead(Session& session, const HttpRequest& request) try {
  if (std::string fault = origins_.findFault(request.host, request.origin); !fault.empty()) {
    metrics_.countRefusal(Refusal::Origin);
    return Page{.status = 403, .body = std::move(fault)};
  }
  if (request.upgrades && request.path == kSocketPath) return std::nullopt;
  if (auto page = statusPage(session, request)) return page;
  return findPage(request.method, request.path);
} catch (const std::exception& error) {
  TERMINAL_LOG(logger(), Error, "{}: a page could not be made: {}", session.name(), error.what());
  metrics_.countRefusal(Refusal::Fault);
  return Page{.status = 500, .body = "The terminal failed inside; its log says more.\n"};
}

// The pages that say how the gateway fares.
std::optional<Page> Gateway::statusPage(const Session& session, const HttpRequest& request) {
  if (request.method != "GET") return std::nullopt;
  constexpr const char* kHealthType = "application/health+json";
  const auto page = [](const std::vector<HealthCheck>& checks) {
    return Page{worstOf(checks) == HealthStatus::Fail ? 503U : 200U, kHealthType, writeHealth(checks)};
  };
  const HealthCheck live{.name = "live"};
  if (request.path == "/health/live") return page({live});
  if (request.path == "/health/ready") return page(readiness());
  if (request.path == "/health") {
    std::vector<HealthCheck> checks = readiness();
    checks.insert(checks.begin(), live);
    return page(checks);
  }
  if (request.path != "/metrics") return std::nullopt;
  if (maySeeMetrics(session, request)) return Page{200, "text/plain; version=0.0.4", metrics_.write(gauges())};
  return Page{.status = 401, .body = "From another machine: send the header Authorization: Bearer TOKEN.\n"};
}

bool Gateway::maySeeMetrics(const Session& session, const HttpRequest& request) {
  if (session.address().is_loopback()) return true;
  return request.authorization.starts_with(kBearer) && keeper_.maySee(request.authorization.substr(kBearer.size()));
}

// Ready: the agent takes requests and answers them, and the host says nothing against it.
std::vector<HealthCheck> Gateway::readiness() const {
  Clock::time_point oldest = Clock::now();
  const Clock::time_point now = oldest;
  for (const auto& [id, handed] : handed_) oldest = std::min(oldest, handed.since);
  HealthCheck agent{.name = "agent:requests"};
  if (!isTaking_()) agent = {agent.name, HealthStatus::Fail, "the agent takes no requests"};
  HealthCheck answers{.name = "agent:answers", .seconds = std::chrono::duration<double>(now - oldest).count()};
  if (now - oldest > kLongAnswer) {
    answers.status = HealthStatus::Fail;
    answers.output = fmt::format("a request has waited for {}", secondsText(now - oldest));
  }
  std::vector<HealthCheck> checks = options_.probe ? options_.probe() : std::vector<HealthCheck>{};
  checks.push_back(std::move(agent));
  checks.push_back(std::move(answers));
  checks.insert(checks.begin(), HealthCheck{.name = "ready", .status = worstOf(checks)});
  return checks;
}

Gauges Gateway::gauges() const {
  const auto isAdmitted = [](const auto& entry) { return entry.first->isAdmitted(); };
  return {.connections = peers_.size(),
          .loggedIn = static_cast<size_t>(std::count_if(peers_.begin(), peers_.end(), isAdmitted)),
          .waiting = pending_.size()};
}

void Gateway::onFrame(Session& session, std::string_view text) {
  guard(session, [&] { take(session, text); });
}

// A phone whose frame or reply failed here must not wait for what never comes.
template <typename Work>
void Gateway::guard(Session& session, const Work& work) try {
  work();
} catch (const std::exception& error) {
  TERMINAL_LOG(logger(), Error, "{}: a frame could not be worked off: {}", session.name(), error.what());
  metrics_.countRefusal(Refusal::Fault);
  session.close(CloseCode::Fault, "the terminal failed inside; its log says more");
}

void Gateway::take(Session& session, std::string_view text) {
  if (peers_.at(&session).penalty != nullptr) return;
  const auto read = readFrame(text);
  const auto* frame = std::get_if<Frame>(&read);
  if (frame != nullptr && frame->topic == kLogin) return onLogin(session, *frame);
  if (frame != nullptr && session.isAdmitted()) return onRequest(session, *frame);
  if (const auto* error = std::get_if<FrameError>(&read)) {
    refuse(session, Refusal::Frame, error->id, error->topic, error->message);
  } else {
    refuse(session, Refusal::Login, frame->id, frame->topic, R"(log in first: {"topic": "login", "token": ...})");
  }
  if (!session.isAdmitted()) session.close(CloseCode::NoLogin, "the first message must be a login");
}

void Gateway::onLogin(Session& session, const Frame& frame) {
  const std::optional<Visitor> visitor = keeper_.admit(frame.token);
  if (!visitor) return onWrongLogin(session, frame);
  if (!visitor->rights.empty()) return admit(session, frame, *visitor);
  refuse(session, Refusal::Login, frame.id, kLogin, "this token has no rights: make another");
  session.close(CloseCode::NotEntitled, "no rights");
}

// The answer waits, so that guessing takes its time; what the phone sends meanwhile is passed over.
void Gateway::onWrongLogin(Session& session, const Frame& frame) {
  const std::string address = session.address().to_string();
  TERMINAL_LOG(logger(), Warn, "{} from {} does not know a token", session.name(), address);
  if (!keeper_.allowWrong(networkOf(session.address()))) {
    refuse(session, Refusal::Login, frame.id, kLogin,
           fmt::format("too many wrong logins from {}: wait a minute", address));
    return session.close(CloseCode::TooMany, "too many wrong logins");
  }
  Peer& peer = peers_.at(&session);
  peer.penalty = std::make_unique<asio::steady_timer>(io_, kPenalty);
  peer.penalty->async_wait([this, weak = std::weak_ptr(peer.session), id = std::string(frame.id)](const auto& error) {
    const auto phone = weak.lock();
    if (error || phone == nullptr) return;
    refuse(*phone, Refusal::Login, id, kLogin, "wrong token: take one that pocket-terminal token add printed");
    phone->close(CloseCode::NoLogin, "wrong token");
  });
}

void Gateway::admit(Session& session, const Frame& frame, const Visitor& visitor) {
  Peer& peer = peers_.at(&session);
  peer.visitor = visitor;
  peer.device = frame.device;
  replaceOlder(session, peer);
  if (connectionsOf(visitor.token) > kMaxOfToken) {
    refuse(session, Refusal::Login, frame.id, kLogin,
           fmt::format("{} connections with this token are open already", kMaxOfToken));
    return session.close(CloseCode::TooMany, "too many connections with this token");
  }
  TERMINAL_LOG(logger(), Info, "{} is logged in as {} from {}", session.name(), visitor.name,
               session.address().to_string());
  session.admit();
  const bool resumes = frame.resume && pushes_.canResume(frame.resume->epoch, frame.resume->seq);
  sendText(session, writeWelcome(frame.id, visitor, {pushes_.epoch(), pushes_.last()}, resumes));
  if (resumes && visitor.rights.has(Right::See)) {
    pushes_.resume(frame.resume->seq, [&](const PushLog::Text& text) { session.send(text); });
  }
}

size_t Gateway::connectionsOf(int64_t token) const {
  return static_cast<size_t>(std::count_if(peers_.begin(), peers_.end(), [token](const auto& entry) {
    const auto& [session, peer] = entry;
    return peer.visitor.token == token && !session->isClosing();
  }));
}

// A phone that comes back has given its older connection up.
void Gateway::replaceOlder(Session& session, const Peer& peer) {
  if (peer.device.empty()) return;
  for (const auto& [other, each] : peers_) {
    if (other == &session || each.device != peer.device || each.visitor.token != peer.visitor.token) continue;
    other->close(CloseCode::Replaced, "the same device has logged in anew");
  }
}

void Gateway::onRequest(Session& session, const Frame& frame) {
  Peer& peer = peers_.at(&session);
  if (!mayPass(session, peer, frame)) return;
  if (peer.waiting >= kMaxWaiting || queue_.bytes(peer.visitor.token) >= kMaxWaitingBytes) {
    return onOverrun(session, peer, frame);
  }
  const bool isAction = changesSomething(frame.topic);
  const int64_t requestId = ++lastRequestId_;
  if (isAction && !beginAction(session, peer, frame, requestId)) return;
  const size_t topic = Metrics::topicNumber(frame.topic);
  pending_.emplace(requestId, Pending{{&session, std::string(frame.id)}, {}, isAction, topic, Clock::now()});
  ++peer.waiting;
  queue_.add(peer.visitor.token, {requestId, frame.terminalType, frame.topic, std::string(frame.body)});
  handOn();
}

// The library works off one request after the other, so it gets a few at a time, and of each token in turn.
void Gateway::handOn() {
  while (handed_.size() < kMaxHanded && handedBytes_ < kHandedBytes) {
    const std::optional<Job> job = queue_.next();
    if (!job) return;
    if (isWanted(*job) && !hand(*job)) takeBack(*job);
  }
}

// What changes something is carried out although its phone went away.
bool Gateway::isWanted(const Job& job) const {
  const auto request = pending_.find(job.requestId);
  if (request == pending_.end()) return false;
  const Session* session = request->second.first.session;
  return request->second.isAction || (session != nullptr && !session->isClosing());
}

bool Gateway::hand(const Job& job) try {
  if (!receive_(job.requestId, job.terminalType, job.topic, job.body)) return false;
  handed_.emplace(job.requestId, Handed{Clock::now(), job.size()});
  handedBytes_ += job.size();
  metrics_.countRequest(Metrics::topicNumber(job.topic));
  return true;
} catch (const std::exception& error) {
  TERMINAL_LOG(logger(), Error, "a request of {} could not be handed on: {}", job.topic, error.what());
  return false;
}

void Gateway::takeBack(const Job& job) {
  keeper_.abandon(job.requestId);
  const auto node = pending_.extract(job.requestId);
  if (node.empty()) return;
  metrics_.countRefusal(Refusal::Agent);
  MobileMessage refusal;
  refusal.topic = job.topic;
  refusal.message = "the terminal takes no requests now: this one was not taken";
  answerAll(node.mapped(), refusal);
}

bool Gateway::mayPass(Session& session, const Peer& peer, const Frame& frame) {
  Refusal reason = Refusal::Rights;
  std::string fault = findRightsFault(peer.visitor.rights, frame.topic);
  if (!fault.empty()) {
    keeper_.noteRefusal(peer.visitor, session.address().to_string(), frame, fault);
  } else if (!frame.key.empty() && !changesSomething(frame.topic)) {
    reason = Refusal::Key;
    fault = "only a request that changes something takes a key";
  } else {
    reason = Refusal::Body;
    fault = findBodyFault(frame.topic, frame.body);
  }
  if (!fault.empty()) refuse(session, reason, frame.id, frame.topic, fault);
  return fault.empty();
}

// True where the action is to be handed on; otherwise it is answered, or will be.
bool Gateway::beginAction(Session& session, Peer& peer, const Frame& frame, int64_t requestId) {
  const auto verdict = keeper_.begin(requestId, peer.visitor, session.address().to_string(), frame);
  if (std::holds_alternative<ActionStore::Fresh>(verdict)) return true;
  if (const auto* running = std::get_if<ActionStore::Running>(&verdict)) {
    pending_.at(running->requestId).others.push_back({&session, std::string(frame.id)});
    ++peer.waiting;
  } else if (const auto* reply = std::get_if<MobileMessage>(&verdict)) {
    sendText(session, writeAnswer(frame.id, *reply));
  } else {
    refuse(session, Refusal::Key, frame.id, frame.topic, std::get<ActionStore::Refusal>(verdict).message);
  }
  return false;
}

void Gateway::onOverrun(Session& session, Peer& peer, const Frame& frame) {
  const bool isMany = peer.waiting >= kMaxWaiting;
  refuse(session, Refusal::Crowd, frame.id, frame.topic,
         isMany ? fmt::format("{} requests wait for their reply already", peer.waiting)
                : "requests of this token with 8 MiB wait already");
  if (++peer.overruns >= kMaxOverruns) session.close(CloseCode::TooMany, "too many requests wait for their reply");
}

void Gateway::refuse(Session& session, Refusal reason, std::string_view id, std::string_view topic,
                     std::string_view why) {
  TERMINAL_LOG(logger(), Debug, "{}: {}", session.name(), why);
  metrics_.countRefusal(reason);
  sendText(session, writeFailure(id, topic, why));
}

void Gateway::onClosed(Session& session) {
  TERMINAL_LOG(logger(), Debug, "{} is gone", session.name());
  if (const auto code = session.closeCode()) metrics_.countClose(static_cast<int>(*code));
  for (auto entry = pending_.begin(); entry != pending_.end();) {
    Pending& pending = entry->second;
    std::erase_if(pending.others, [&](const Waiter& waiter) { return waiter.session == &session; });
    if (pending.first.session == &session) pending.first.session = nullptr;
    const bool isIdle = pending.first.session == nullptr && !pending.isAction;
    entry = isIdle ? pending_.erase(entry) : std::next(entry);
  }
  queue_.dropWhere([this](const Job& job) { return !pending_.contains(job.requestId); });
  peers_.erase(&session);
}

void Gateway::onMessage(const MobileMessage& message) {
  if (message.requestId == kNoRequestId) return push(message);
  if (const auto handed = handed_.extract(message.requestId); !handed.empty()) {
    handedBytes_ -= handed.mapped().bytes;
  }
  if (const auto node = pending_.extract(message.requestId); !node.empty()) {
    onReply(node.mapped(), message);
  } else {
    TERMINAL_LOG(logger(), Debug, "nobody waits for the reply {} to {}", message.requestId, message.topic);
  }
  handOn();
}

void Gateway::onReply(const Pending& request, const MobileMessage& message) {
  if (request.isAction) keeper_.finish(message.requestId, message);
  metrics_.countAnswer(request.topic, !message.message.empty(), Clock::now() - request.since);
  answerAll(request, message);
}

void Gateway::answerAll(const Pending& request, const MobileMessage& message) {
  answer(request.first, message);
  for (const Waiter& waiter : request.others) answer(waiter, message);
}

void Gateway::answer(const Waiter& waiter, const MobileMessage& message) {
  if (waiter.session == nullptr) return;
  Peer& peer = peers_.at(waiter.session);
  if (--peer.waiting < kMaxWaiting / 2) peer.overruns = 0;
  if (waiter.session->isClosing()) return;
  guard(*waiter.session, [&] { sendText(*waiter.session, writeAnswer(waiter.id, message)); });
}

void Gateway::push(const MobileMessage& message) {
  metrics_.countPush();
  const PushLog::Text text = pushes_.add(message);
  for (const auto& [session, peer] : peers_) {
    if (peer.visitor.rights.has(Right::See)) session->send(text);
  }
}

void Gateway::watch() {
  watchTimer_.expires_after(kWatchPeriod);
  watchTimer_.async_wait([this](const error_code& error) {
    if (error || !acceptor_.is_open()) return;
    keeper_.tick();
    closeUnwelcome();
    watch();
  });
}

void Gateway::closeUnwelcome() {
  for (const auto& [session, peer] : peers_) {
    if (session->isAdmitted() && !keeper_.isWelcome(peer.visitor)) {
      session->close(CloseCode::NotEntitled, "the token was revoked");
    }
  }
}

void Gateway::closeAll() {
  error_code ignored;
  acceptor_.close(ignored);
  acceptTimer_.cancel();
  watchTimer_.cancel();
  for (const auto& [session, peer] : peers_) session->close(CloseCode::GoingAway, "the terminal stops");
}

}  // namespace orvane::terminal
