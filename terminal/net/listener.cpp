#include "terminal/net/listener.h"

#include <algorithm>
#include <boost/asio/ip/host_name.hpp>
#include <boost/asio/ip/network_v6.hpp>
#include <stdexcept>
#include <utility>

#include <netinet/tcp.h>

#include "terminal/logging.h"
#include "terminal/net/httpconnection.h"
#include "terminal/net/webpages.h"
#include "terminal/net/websocketsession.h"

namespace orvane::terminal {
namespace {

namespace asio = boost::asio;
namespace ip = boost::asio::ip;
using boost::system::error_code;
using ip::tcp;

constexpr int kMaxUnsentBytes = 256 * 1024;
constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::string_view kSocketPath = "/ws";

ip::address parseAddress(const std::string& text) {
  error_code error;
  ip::address address = ip::make_address(text, error);
  if (error) throw std::runtime_error(fmt::format("--listen must be an IP address, not {}", text));
  return address;
}

// A wildcard address is useless in a link, so the link has the host name.
std::string urlHost(const ip::address& address) {
  error_code error;
  if (address.is_unspecified()) return ip::host_name(error);
  return address.is_v6() ? '[' + address.to_string() + ']' : address.to_string();
}

// IPv4-mapped addresses are returned as IPv4. Unspecified if the client is gone already.
ip::address addressOf(const tcp::socket& socket) {
  error_code gone;
  ip::address address = socket.remote_endpoint(gone).address();
  if (!address.is_v6() || !address.to_v6().is_v4_mapped()) return address;
  return ip::make_address_v4(ip::v4_mapped, address.to_v6());
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

std::string networkOf(const ip::address& address) {
  if (address.is_v4()) return address.to_string();
  return ip::network_v6(address.to_v6(), 64).canonical().to_string();
}

Listener::Listener(asio::io_context& context, ListenOptions options, ISessionOwner& sessions, IPageOwner& pages)
    : options_(std::move(options)),
      sessions_(sessions),
      pages_(pages),
      tls_(options_.tls ? makeServerTls(*options_.tls) : nullptr),
      origins_(tls_ != nullptr, options_.allowedOrigins, certifiedNames(tls_)),
      compressionMemory_(options_.limits.maxCompressionBytes),
      acceptor_(context),
      retryTimer_(context) {
  const ip::address address = parseAddress(options_.address);
  if (!address.is_loopback() && tls_ == nullptr) {
    throw std::runtime_error(fmt::format(
        "beyond this machine, on {}, the terminal listens with TLS only: add --tls-self, or --tls-cert and --tls-key",
        options_.address));
  }
  try {
    acceptor_ = tcp::acceptor(context, tcp::endpoint(address, options_.port));
    port_ = acceptor_.local_endpoint().port();
  } catch (const boost::system::system_error& error) {
    throw std::runtime_error(fmt::format("cannot listen on {}:{}: {}{}", options_.address, options_.port,
                                         error.code().message(), adviceFor(error.code())));
  }
}

std::string Listener::url() const {
  return fmt::format("{}://{}:{}", tls_ ? "https" : "http", urlHost(parseAddress(options_.address)), port_);
}

void Listener::start() {
  accept();
  TERMINAL_LOG(gatewayLogger(), Info, "listening at {}", url());
}

void Listener::stop() {
  error_code ignored;  // the socket is closed whatever this returns
  acceptor_.close(ignored);
  retryTimer_.cancel();
  for (const auto& [key, entry] : connections_) entry.connection->stop();
}

TransportFigures Listener::figures() const {
  return {
      .connections = connections_.size(), .refusedConnections = refusedConnections_, .refusedOrigins = refusedOrigins_};
}

void Listener::accept() {
  acceptor_.async_accept([this](const error_code& error, tcp::socket socket) { onAccept(error, std::move(socket)); });
}

void Listener::onAccept(const error_code& error, tcp::socket socket) {
  if (!acceptor_.is_open()) return;
  if (error) return retryAccept(error.message());
  if (makeRoom()) {
    open(std::move(socket));
  } else {
    TERMINAL_LOG(gatewayLogger(), Warn, "a connection is refused: {} are open", connections_.size());
    ++refusedConnections_;
  }
  accept();
}

// Without the pause a process that is out of descriptors would spin here.
void Listener::retryAccept(const std::string& reason) {
  TERMINAL_LOG(gatewayLogger(), Warn, "cannot accept a connection: {}", reason);
  retryTimer_.expires_after(kAcceptPause);
  retryTimer_.async_wait([this](const error_code& error) {
    if (!error) accept();
  });
}

// If all places are taken, the oldest connection without a login gives way, so that idle connections cannot keep
// clients out.
bool Listener::makeRoom() {
  if (connections_.size() < options_.maxConnections) return true;
  const Entry* oldest = nullptr;
  for (const auto& [key, entry] : connections_) {
    if (!entry.connection->mayGiveWay()) continue;
    if (oldest == nullptr || entry.number < oldest->number) oldest = &entry;
  }
  if (oldest == nullptr) return false;
  ++refusedConnections_;
  oldest->connection->cut("it gives way to a new one");
  return true;
}

void Listener::open(tcp::socket socket) {
  error_code ignored;
  socket.set_option(tcp::no_delay(true), ignored);  // a push must not delay the reply behind it
  // What a slow client has not taken waits here, where it is counted, rather than as megabytes in the kernel.
  using MaxUnsent = boost::asio::detail::socket_option::integer<IPPROTO_TCP, TCP_NOTSENT_LOWAT>;
  socket.set_option(MaxUnsent(kMaxUnsentBytes), ignored);
  const ip::address address = addressOf(socket);
  const int64_t number = ++lastNumber_;
  Remote remote{fmt::format("phone {}", number), address.to_string(), networkOf(address), address.is_loopback()};
  auto stream = std::make_unique<SecureStream>(boost::beast::tcp_stream(std::move(socket)), tls_.get());
  auto connection = openHttpConnection(std::move(stream), remote, *this, options_.limits);
  const Connection* key = connection.get();
  connections_.emplace(key, Entry{std::move(connection), std::move(remote), number});
}

void Listener::onRequestHead(const HttpRequest& request, IPageOwner::Answer answer) {
  if (std::string fault = origins_.findFault(request.host, request.origin); !fault.empty()) {
    ++refusedOrigins_;
    return answer(Page{.status = 403, .body = std::move(fault)});
  }
  if (request.isUpgrade && request.path == kSocketPath) return answer(std::nullopt);
  if (auto file = findFile(request)) return answer(std::move(file));
  const auto orMissing = [method = std::string(request.method), path = std::string(request.path),
                          answer = std::move(answer)](std::optional<Page> page) {
    answer(page ? std::move(page) : missingPage(method, path));
  };
  pages_.makePage(request, orMissing);
}

void Listener::onUpgrade(Connection& connection, std::unique_ptr<SecureStream> stream, UpgradeRequest request) {
  auto node = connections_.extract(&connection);
  Entry& entry = node.mapped();
  entry.connection = openWebSocket(std::move(stream), std::move(request), entry.remote, sessions_, *this,
                                   compressionMemory_, options_.limits);
  node.key() = entry.connection.get();
  connections_.insert(std::move(node));
}

// The largest backlog goes first: its client is the slowest, and the fewest clients are lost.
void Listener::onBacklog(size_t before, size_t now) {
  backlogBytes_ = backlogBytes_ - before + now;
  const auto isSmaller = [](const auto& one, const auto& other) {
    return one.second.connection->backlogBytes() < other.second.connection->backlogBytes();
  };
  while (backlogBytes_ > options_.limits.maxBacklogBytes) {
    std::max_element(connections_.begin(), connections_.end(), isSmaller)->second.connection->cutBacklog();
  }
}

void Listener::onEnded(Connection& connection) { connections_.erase(&connection); }

}  // namespace orvane::terminal
