#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <nats/nats.h>

#include "terminal/relay/message.h"
#include "terminal/relay/subjects.h"
#include "tests/gateway/wireclient.h"
#include "tests/relay/cluster.h"
#include "tests/relay/echohost.h"
#include "tests/relay/listening.h"
#include "tests/support/holdssoon.h"

namespace orvane::test {
namespace {

using namespace terminal::relay;
using terminal::Client;
using terminal::Reply;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kOrder =
    R"({"orderList":[{"index":1,"hashCode":1000001,"side":1,"combOffset":1,"priceType":1,"price":3300,"offset":0,)"
    R"("volume":1,"insertTimestamp":1000,"source":"x"}]})";

std::string epochIn(const Reply& welcome) { return welcome.data.substr(welcome.data.find("epoch") + 8, 16); }

std::string resumeFrom(const std::string& epoch, int seq) {
  return fmt::format(R"(,"resume":{{"epoch":"{}","seq":{}}})", epoch, seq);
}

// Real servers, relays and terminals, which all tests share because they take a while to start.
class RelayCluster : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    cluster_ = std::make_unique<Cluster>(true);
    relay1_ = std::make_unique<RelayProcess>(*cluster_, "r1");
    relay2_ = std::make_unique<RelayProcess>(*cluster_, "r2");
    desk_ = std::make_unique<FarTerminal>(*cluster_, "t1");
    others_ = {std::make_unique<FarTerminal>(*cluster_, "t2"), std::make_unique<FarTerminal>(*cluster_, "t3")};
    loginThrough(relay1_->port(), "t1", desk_->token());
    loginThrough(relay2_->port(), "t1", desk_->token());
  }
  static void TearDownTestSuite() {
    EXPECT_EQ(desk_->program().end(SIGTERM), 0);
    for (auto& each : others_) EXPECT_EQ(each->program().end(SIGTERM), 0);
    EXPECT_EQ(relay1_->program().end(SIGTERM), 0);
    desk_.reset();
    others_ = {};
    relay1_.reset();
    relay2_.reset();
    cluster_.reset();
  }

  static std::unique_ptr<Client> login() { return loginThrough(relay1_->port(), "t1", desk_->token()); }

  // A client of the cluster with somebody's credentials that is connected.
  static std::unique_ptr<Listening> listen(const std::string& credentials, std::vector<std::string> subscriptions) {
    auto made = std::make_unique<Listening>(cluster_->urlList(), readCredentials(cluster_->credentials(credentials)),
                                            std::move(subscriptions));
    EXPECT_TRUE(holdsSoon([&] { return made->isUp(); }));
    return made;
  }

  static inline std::unique_ptr<Cluster> cluster_;
  static inline std::unique_ptr<RelayProcess> relay1_;
  static inline std::unique_ptr<RelayProcess> relay2_;
  static inline std::unique_ptr<FarTerminal> desk_;
  static inline std::array<std::unique_ptr<FarTerminal>, 2> others_;
};

// An order placed through one relay is pushed to a phone at the other, and a phone may come back through either.
TEST_F(RelayCluster, ServesPhonesThroughAnyRelay) {
  const auto phone = login();
  const auto other = loginThrough(relay2_->port(), "t1", desk_->token());
  EXPECT_THAT(phone->request("account.list").data, HasSubstr("80010001"));
  EXPECT_EQ(phone->request("order.new", kOrder).message, "");
  const std::string seq = phone->waitPush("order.push").seq;
  EXPECT_EQ(other->waitPush("order.push").seq, seq);

  Client back(relay2_->port());
  back.send(loginFrame("t1", desk_->token()));
  const std::string epoch = epochIn(back.receive());
  Client again(relay1_->port());
  again.send(loginFrame("t1", desk_->token(), resumeFrom(epoch, std::stoi(seq) - 1)));
  EXPECT_THAT(again.receive().data, HasSubstr("\"resumed\":true"));
  EXPECT_EQ(again.receive().seq, seq);
}

// Three terminals with a phone at each relay: an order, a push, a token and an end concern one terminal alone.
TEST_F(RelayCluster, KeepsEachPhoneToItsOwnTerminal) {
  struct Pair {
    FarTerminal& desk;
    std::unique_ptr<Client> first;
    std::unique_ptr<Client> second;
  };
  std::vector<Pair> pairs;
  for (FarTerminal* desk : {desk_.get(), others_[0].get(), others_[1].get()}) {
    pairs.push_back({*desk, loginThrough(relay1_->port(), desk->name(), desk->token()),
                     loginThrough(relay2_->port(), desk->name(), desk->token())});
  }
  const std::string before = pairs[0].first->request("order.list", "[1]").data;
  EXPECT_EQ(pairs[1].first->request("order.new", kOrder).message, "");
  EXPECT_THAT(pairs[1].second->waitPush("order.push").data, HasSubstr("\"price\":3300"));
  for (const size_t stranger : {size_t{0}, size_t{2}}) {
    for (Client* phone : {pairs[stranger].first.get(), pairs[stranger].second.get()}) {
      phone->send(R"({"id":7,"topic":"account.list","data":null})");
      EXPECT_EQ(phone->receive().id, "7");  // no push came first
    }
  }
  EXPECT_EQ(pairs[0].first->request("order.list", "[1]").data, before);
  EXPECT_EQ(tryLogin(relay1_->port(), "t2", pairs[0].desk.token()).code, 4401);

  pairs[2].desk.program().end(SIGKILL);
  pairs[2].desk.restart(*cluster_);
  EXPECT_THAT(pairs[2].first->waitClose(), AnyOf(1012, 1013));
  EXPECT_THAT(pairs[2].second->waitClose(), AnyOf(1012, 1013));
  for (const size_t other : {size_t{0}, size_t{1}}) {
    EXPECT_EQ(pairs[other].first->request("account.list").message, "");
    EXPECT_EQ(pairs[other].second->request("account.list").message, "");
  }
  EXPECT_EQ(loginThrough(relay2_->port(), "t3", pairs[2].desk.token())->request("account.list").message, "");
}

TEST_F(RelayCluster, RefusesWrongTokensAndNames) {
  const Refusal token = tryLogin(relay1_->port(), "t1", "wrong");
  EXPECT_THAT(token.message, StartsWith("wrong token"));
  EXPECT_EQ(token.code, 4401);
  const Refusal name = tryLogin(relay1_->port(), "t9", desk_->token());
  EXPECT_THAT(name.message, HasSubstr("not seen a terminal with the name t9"));
  EXPECT_EQ(name.code, 4404);
}

// The terminal counts by the phone's address, not by the relay's.
TEST_F(RelayCluster, LocksOutOnlyThePhoneThatGuesses) {
  std::vector<std::unique_ptr<WireClient>> guesses;
  for (int i = 0; i < 11; ++i) {
    guesses.push_back(std::make_unique<WireClient>(relay1_->port(), "127.0.7.1"));
    guesses.back()->send(loginFrame("t1", "wrong"));
  }
  EXPECT_TRUE(holdsSoon([&] { return guesses.back()->receive().closeCode == 4429; }));
  WireClient neighbour(relay1_->port(), "127.0.7.2");
  neighbour.send(loginFrame("t1", desk_->token()));
  EXPECT_THAT(neighbour.receive().text, HasSubstr("\"rights\""));
}

TEST_F(RelayCluster, CarriesLongRepliesPastASlowPhone) {
  const EchoHost host(*cluster_, "t4");
  loginThrough(relay1_->port(), "t4", "t");
  Client slow(relay1_->port());
  slow.send(loginFrame("t4", "t", R"(,"size":40000000)"));
  Client fast(relay1_->port(), {.certificate = {}, .patience = std::chrono::seconds(60)});
  fast.send(loginFrame("t4", "t"));
  EXPECT_EQ(fast.receive().data, "\"\"");
  fast.send(R"({"size":12800000})");
  EXPECT_EQ(fast.receive().data.size(), 12'800'002U);
}

TEST_F(RelayCluster, RefusesASecondTerminalOfTheName) {
  const auto phone = login();
  FarTerminal second(*cluster_, "t1");
  EXPECT_EQ(second.program().readLine(),
            "pocket-terminal: a terminal with the name t1 is present already: end it, or give this one another name "
            "with pocket-relay setup");
  EXPECT_EQ(second.program().end(0), 1);
  EXPECT_EQ(phone->request("account.list").message, "");
}

// With the credentials of another terminal nobody hears or speaks in this one's sessions.
TEST_F(RelayCluster, KeepsTerminalsApart) {
  const auto relay = listen("r2", {std::string(kAllPresences)});
  const auto epoch = [&]() -> std::string {
    for (const auto& each : relay->heard()) {
      if (each.subject == presenceSubject("t1")) return std::string(decode(each.bytes)->payload);
    }
    return {};
  };
  ASSERT_TRUE(holdsSoon([&] { return !epoch().empty(); }));
  const std::string leaving = encode({.kind = Kind::Leaving, .payload = epoch()});
  const auto phone = login();
  const auto hostile = listen("t2", {"pocket.>", "pocket.up.t1.>", "pocket.up.>", "pocket.here.*", "pocket.down.>"});
  hostile->publish(presenceSubject("t1"), leaving);
  EXPECT_EQ(phone->request("account.list").message, "");
  const Refusal still = tryLogin(relay1_->port(), "t1", "wrong");  // the relay has worked off what came before
  EXPECT_EQ(still.code, 4401);
  EXPECT_TRUE(hostile->heard().empty());
  // With its own credentials the same message counts.
  listen("t1", {})->publish(presenceSubject("t1"), leaving);
  EXPECT_EQ(phone->waitClose(), 1013);
}

TEST_F(RelayCluster, RefusesClientsWithoutItsCredentials) {
  const Credentials good = readCredentials(cluster_->credentials("t1"));
  natsOptions* options = nullptr;
  natsConnection* connection = nullptr;
  natsOptions_Create(&options);
  natsOptions_SetURL(options, cluster_->urlList()[0].c_str());
  natsOptions_SetSecure(options, true);
  natsOptions_LoadCATrustedCertificates(options, good.file.c_str());
  EXPECT_EQ(natsConnection_Connect(&connection, options), NATS_CONNECTION_AUTH_FAILED);
  natsOptions_Destroy(options);
  const auto failsWith = [](Listening& link, const char* why) {
    return holdsSoon([&] { return link.fault().find(why) != std::string::npos; });
  };
  Listening stranger(cluster_->urlList(), {"t1", NKey::make(), good.page, good.authority, good.file}, {});
  EXPECT_TRUE(failsWith(stranger, "refuses the credentials")) << stranger.fault();
  Listening distrustful(cluster_->urlList(), {"t1", good.key, good.page, {}, {}}, {});
  EXPECT_TRUE(failsWith(distrustful, "ertificate")) << distrustful.fault();
}

TEST_F(RelayCluster, ShowsHealthAndMetrics) {
  const auto phone = login();
  EXPECT_THAT(get(relay1_->port(), "/health"), HasSubstr(R"("cluster:connection":[{"status":"pass")"));
  EXPECT_THAT(get(relay1_->port(), "/metrics"), HasSubstr("\npocket_relay_terminals "));
  EXPECT_THAT(get(relay1_->port(), "/"), HasSubstr("<html"));
}

// Each server in turn, so at least one of those that relay and terminal use.
TEST_F(RelayCluster, OutlivesItsServers) {
  for (size_t i = 0; i < 3; ++i) {
    cluster_->killServer(i);
    EXPECT_EQ(login()->request("account.list").message, "") << i;
    cluster_->startServer(i);
  }
}

TEST_F(RelayCluster, OutlivesARelay) {
  const auto phone = login();
  const uint16_t port = relay1_->port();
  relay1_->program().end(SIGKILL);
  EXPECT_EQ(phone->waitClose(), 0);
  EXPECT_EQ(loginThrough(relay2_->port(), "t1", desk_->token())->request("account.list").message, "");
  relay1_ = std::make_unique<RelayProcess>(*cluster_, "r1", port);
  EXPECT_EQ(login()->request("account.list").message, "");
}

TEST_F(RelayCluster, BringsPhonesBackToARestartedTerminal) {
  const auto phone = login();
  phone->request("order.new", kOrder);
  desk_->program().end(SIGKILL);
  desk_->restart(*cluster_);
  EXPECT_THAT(phone->waitClose(), AnyOf(1012, 1013));
  EXPECT_THAT(login()->request("order.list", "[1]").data, HasSubstr("localOrderId"));
}

}  // namespace
}  // namespace orvane::test
