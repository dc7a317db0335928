#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "host/mobilemessage.h"
#include "terminal/net/originpolicy.h"
#include "terminal/net/session.h"
#include "terminal/phones/fairqueue.h"
#include "terminal/phones/frame.h"
#include "terminal/phones/gatekeeper.h"
#include "terminal/phones/health.h"
#include "terminal/phones/metrics.h"
#include "terminal/phones/pushlog.h"
#include "terminal/tls.h"

namespace orvane::terminal {

struct GatewayOptions {
  std::string address = "127.0.0.1";  // an IP address of this machine, or one that stands for all
  uint16_t port = 8700;               // 0 is any free one
  std::optional<TlsFiles> tls;        // REQUIRED beyond loopback
  std::vector<std::string> allowedOrigins;
  std::filesystem::path dataDir;
  SessionLimits limits;
  HealthProbe probe;  // what of the host belongs into the health page; called on the gateway's thread
};

// The phones' side of the terminal: takes their connections and frames, gives each request an id of its own, and
// brings every reply back to the connection that asked. One life: start, stop. Its thread runs everything but the
// operations below.
class Gateway : private ISessionOwner {
 public:
  // Takes one request over; topic and data are UTF-8. False where nobody is there to answer it. Called on the
  // gateway's thread.
  using Receive =
      std::function<bool(int64_t requestId, int32_t terminalType, const std::string& topic, const std::string& data)>;

  // Whether somebody is there to answer a request. Any thread.
  using IsTaking = std::function<bool()>;

  // Takes the port, but no connection yet. Throws std::runtime_error where it is not to be had, or a TLS file is at
  // fault.
  explicit Gateway(GatewayOptions options);
  ~Gateway() override;
  Gateway(const Gateway&) = delete;
  Gateway& operator=(const Gateway&) = delete;

  // Where a browser of this machine, or of others where it listens beyond loopback, finds it: "http://127.0.0.1:8700".
  std::string url() const;

  // Takes connections from now on. REQUIRES: not started before.
  void start(Receive receive, IsTaking isTaking);

  // Closes every connection with 1001 and ends the thread. Does nothing when not started.
  void stop();

  // Brings a message, all texts UTF-8, to the connection that waits for it, or to all where it belongs to no request.
  // Any thread.
  void deliver(const MobileMessage& message);

 private:
  using Clock = std::chrono::steady_clock;

  struct Peer {
    std::shared_ptr<Session> session;
    int64_t number = 0;  // counts up with each connection
    Visitor visitor;
    std::string device;
    size_t waiting = 0;   // requests without a reply
    size_t overruns = 0;  // requests refused since fewer than half of the most waited
    bool givesWay = false;
    std::unique_ptr<boost::asio::steady_timer> penalty;  // runs after a wrong login
  };
  struct Waiter {
    Session* session = nullptr;  // null where it is gone
    std::string id;              // the phone's own, as JSON text
  };
  struct Pending {
    Waiter first;
    std::vector<Waiter> others;  // of the same action
    bool isAction = false;       // its reply is remembered, whoever waits
    size_t topic = 0;            // as the metrics number it
    Clock::time_point since;
  };
  struct Handed {
    Clock::time_point since;
    size_t bytes = 0;
  };

  void accept();
  void onAccept(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);
  void retryAccept(const std::string& reason);
  bool makeRoom();
  std::optional<Page> onRequestHead(Session& session, const HttpRequest& request) override;
  std::optional<Page> statusPage(const Session& session, const HttpRequest& request);
  bool maySeeMetrics(const Session& session, const HttpRequest& request);
  std::vector<HealthCheck> readiness() const;
  Gauges gauges() const;
  void onFrame(Session& session, std::string_view text) override;
  void onClosed(Session& session) override;
  template <typename Work>
  void guard(Session& session, const Work& work);
  void take(Session& session, std::string_view text);
  void onLogin(Session& session, const Frame& frame);
  void onWrongLogin(Session& session, const Frame& frame);
  void admit(Session& session, const Frame& frame, const Visitor& visitor);
  size_t connectionsOf(int64_t token) const;
  void replaceOlder(Session& session, const Peer& peer);
  void onRequest(Session& session, const Frame& frame);
  bool mayPass(Session& session, const Peer& peer, const Frame& frame);
  bool beginAction(Session& session, Peer& peer, const Frame& frame, int64_t requestId);
  void handOn();
  bool isWanted(const Job& job) const;
  bool hand(const Job& job);
  void takeBack(const Job& job);
  void onOverrun(Session& session, Peer& peer, const Frame& frame);
  void refuse(Session& session, Refusal reason, std::string_view id, std::string_view topic, std::string_view why);
  void onMessage(const MobileMessage& message);
  void onReply(const Pending& request, const MobileMessage& message);
  void answerAll(const Pending& request, const MobileMessage& message);
  void answer(const Waiter& waiter, const MobileMessage& message);
  void push(const MobileMessage& message);
  void watch();
  void closeUnwelcome();
  void closeAll();

  const GatewayOptions options_;
  const std::shared_ptr<boost::asio::ssl::context> tls_;  // null without TLS
  const OriginPolicy origins_;
  Gatekeeper keeper_;
  boost::asio::io_context io_{1};
  boost::asio::ip::tcp::acceptor acceptor_{io_};
  boost::asio::steady_timer acceptTimer_{io_};
  boost::asio::steady_timer watchTimer_{io_};
  uint16_t port_ = 0;
  Receive receive_;
  IsTaking isTaking_;
  PushLog pushes_;
  Metrics metrics_;
  std::unordered_map<Session*, Peer> peers_;
  std::unordered_map<int64_t, Pending> pending_;
  FairQueue queue_;
  std::unordered_map<int64_t, Handed> handed_;  // what the library has, by request id
  size_t handedBytes_ = 0;
  int64_t connections_ = 0;
  int64_t lastRequestId_ = 0;
  std::thread thread_;
};

}  // namespace orvane::terminal
