#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "terminal/gatewaydatabase.h"
#include "terminal/phones/gatewaystore.h"
#include "terminal/phones/phones.h"
#include "tests/phones/fakes.h"
#include "tests/support/tempdir.h"

namespace orvane::test {

// What nearly every test uses.
using namespace std::chrono_literals;
using terminal::CloseCode;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// The side of clients without sockets, threads or waiting. The agent answers when the test says so, and the disk's work
// is done after each step.
class PhonesTest : public testing::Test {
 protected:
  using SessionPtr = std::shared_ptr<FakeSession>;

  PhonesTest() {
    phones_.agent().attach(agent_, &handle_);
    phones_.start();
    settle();
  }

  // Does all that can be done without time passing.
  void settle() {
    for (int turns = 0; turns < 1000; ++turns) {
      store_.turn();
      if (!loop_.runPosted()) return;
    }
    FAIL() << "the gateway does not come to rest";
  }

  void advance(std::chrono::nanoseconds time) {
    loop_.time.advance(time);
    settle();
  }

  SessionPtr connect(const std::string& address = "10.0.0.1") {
    auto session = std::make_shared<FakeSession>(address);
    phones_.onOpened(session);
    return session;
  }

  void send(const SessionPtr& session, const std::string& frame) {
    phones_.onFrame(*session, frame);
    settle();
  }

  // The only answer to a request.
  std::string ask(const SessionPtr& session, const std::string& topic, const std::string& data = "[]") {
    send(session, fmt::format(R"({{"id":7,"topic":"{}","data":{}}})", topic, data));
    EXPECT_THAT(session->sent, SizeIs(1)) << topic << ' ' << data.substr(0, 80);
    return session->sent.empty() ? "" : session->take().back();
  }
  static std::string answer(const std::string& topic, const std::string& rows) {
    return fmt::format(R"({{"id":7,"topic":"{}","message":"","data":[{}]}})", topic, rows);
  }
  static std::string pushOf(const std::string& topic, const std::string& rows) {
    return fmt::format(R"({{"topic":"{}","message":"","data":[{}]}})", topic, rows);
  }

  // `more` is further members of the login's frame.
  SessionPtr login(const std::string& token, const std::string& more = "") {
    const SessionPtr session = connect();
    send(session, fmt::format(R"({{"id":1,"topic":"login","token":"{}"{}}})", token, more));
    return session;
  }

  // Logged in, with the answer to that taken away.
  SessionPtr client(const std::string& token) {
    const SessionPtr session = login(token);
    session->sent.clear();
    return session;
  }

  void hangUp(const SessionPtr& session) { phones_.onClosed(*session); }

  static std::string ones(size_t count) {
    std::string list = "[1";
    for (size_t i = 1; i < count; ++i) list += ",1";
    return list + ']';
  }

  static std::string orderFrame(int id, const std::string& key, const std::string& data = "{}") {
    return fmt::format(R"({{"id":{},"topic":"order.new","key":"{}","data":{}}})", id, key, data);
  }

  void order(const SessionPtr& session, int id, const std::string& key, const std::string& data = "{}") {
    send(session, orderFrame(id, key, data));
  }

  void deliver(int64_t requestId, const std::string& topic, const std::string& data) {
    auto message = std::make_shared<MobileMessage>();
    message->requestId = requestId;
    message->topic = topic;
    message->data = data;
    phones_.deliver(std::move(message));
    settle();
  }
  void push(const std::string& topic) { deliver(kNoRequestId, topic, "1"); }

  // The agent's reply to the request that it got as number `index`.
  void reply(size_t index, const std::string& data) {
    deliver(agent_->requests.at(index).id, agent_->requests.at(index).topic, data);
  }

  // Sets the price of instrument 1, and waits until clients get it.
  void movePrice(double last) {
    prices_.set(1, last);
    advance(250ms);
  }

  terminal::Page get(const std::string& path, const std::string& authorization = "", bool isLoopback = true) {
    terminal::HttpRequest request;
    request.method = "GET";
    request.path = path;
    request.authorization = authorization;
    request.network = "10.0.0.9";
    request.isLoopback = isLoopback;
    terminal::Page made;
    phones_.makePage(request, [&](const std::optional<terminal::Page>& page) { made = page.value(); });
    settle();
    return made;
  }

  std::vector<terminal::HealthCheck> probe() const {
    if (failsInside_) throw std::runtime_error("no memory");
    return {};
  }

  std::string addToken(const std::string& name, const std::string& rights) {
    return terminal::addToken(db_, name, terminal::Rights::read(rights));
  }

  TempDir dir_;
  FakeLoop loop_;
  std::shared_ptr<FakeAgent> agent_ = std::make_shared<FakeAgent>();
  int32_t handle_ = 0;
  SQLite::Database db_ = terminal::openGatewayDatabase(dir_.path());
  const std::string token_ = terminal::addToken(db_, "first", terminal::Rights::all());
  terminal::GatewayStore store_{
      {.dataDir = dir_.path(), .audit = {.fileBytes = 2000, .oldFiles = 2}, .maxBytes = 1024 * 1024}, loop_};
  bool failsInside_ = false;
  FakePrices prices_;
  terminal::Phones phones_{loop_,
                           store_,
                           {.probe = [this] { return probe(); },
                            .figures = [] { return terminal::TransportFigures{}; },
                            .prices = &prices_}};
};

}  // namespace orvane::test
