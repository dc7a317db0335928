#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <nats/nats.h>

#include "terminal/relay/message.h"
#include "terminal/relay/subjects.h"
#include "tests/relay/cluster.h"
#include "tests/relay/listening.h"
#include "tests/support/holdssoon.h"
#include "tests/support/orderclients.h"
#include "tests/support/rawsocket.h"

namespace orvane::test {
namespace {

using namespace terminal::relay;
using terminal::Client;
using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;

struct World {
  World() {
    loginThrough(relay1.port(), "t1", desk.token());
    loginThrough(relay2.port(), "t1", desk.token());
  }
  ~World() {
    for (FarTerminal* each : {&desk, &others[0], &others[1]}) EXPECT_EQ(each->program().end(SIGTERM), 0);
    EXPECT_EQ(relay1.program().end(SIGTERM), 0);
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  Cluster cluster{true};
  RelayProcess relay1{cluster, "r1"};
  RelayProcess relay2{cluster, "r2"};
  FarTerminal desk{cluster, "t1"};
  std::array<FarTerminal, 2> others{FarTerminal(cluster, "t2"), FarTerminal(cluster, "t3")};
};

// Real servers, relays and terminals, which all tests share because they take a while to start.
class RelayCluster : public testing::Test {
 protected:
  static void SetUpTestSuite() { world_.emplace(); }
  static void TearDownTestSuite() { world_.reset(); }

  static std::unique_ptr<Client> login() {
    return loginThrough(world_->relay1.port(), "t1", world_->desk.token(),
                        {.certificate = {}, .patience = std::chrono::seconds(60)});
  }

  static Credentials credentials(const std::string& name) { return readCredentials(world_->cluster.credentials(name)); }

  // A client of the cluster with somebody's credentials that is connected.
  static std::unique_ptr<Listening> listen(const std::string& name, std::vector<std::string> subscriptions) {
    auto made = std::make_unique<Listening>(world_->cluster.urlList(), credentials(name), std::move(subscriptions));
    EXPECT_TRUE(holdsSoon([&] { return made->isUp(); }));
    return made;
  }

  static inline std::optional<World> world_;
};

// Three terminals with a phone at each relay: an order, a push, a token and an end concern one terminal alone.
TEST_F(RelayCluster, KeepsEachPhoneToItsOwnTerminal) {
  struct Pair {
    FarTerminal& desk;
    std::unique_ptr<Client> first;
    std::unique_ptr<Client> second;
  };
  std::vector<Pair> pairs;
  for (FarTerminal* desk : {&world_->desk, &world_->others[0], &world_->others[1]}) {
    pairs.push_back({*desk, loginThrough(world_->relay1.port(), desk->name(), desk->token()),
                     loginThrough(world_->relay2.port(), desk->name(), desk->token())});
  }
  const std::string before = pairs[0].first->request("order.list", "[1]").data;
  EXPECT_EQ(pairs[1].first->request("order.new", orderData("mine")).message, "");
  EXPECT_THAT(pairs[1].second->waitPush("order.push").data, HasSubstr(R"("source":"mine)"));
  for (const size_t stranger : {size_t{0}, size_t{2}}) {
    for (Client* phone : {pairs[stranger].first.get(), pairs[stranger].second.get()}) {
      phone->send(R"({"id":7,"topic":"account.list","data":null})");
      EXPECT_EQ(phone->receive().id, "7");  // no push came first
    }
  }
  EXPECT_EQ(pairs[0].first->request("order.list", "[1]").data, before);
  EXPECT_EQ(tryLogin(world_->relay1.port(), "t2", pairs[0].desk.token()), 4401);

  pairs[2].desk.restart();
  EXPECT_THAT(pairs[2].first->waitClose(), AnyOf(1012, 1013));
  EXPECT_THAT(pairs[2].second->waitClose(), AnyOf(1012, 1013));
  for (const size_t other : {size_t{0}, size_t{1}}) {
    EXPECT_EQ(pairs[other].first->request("account.list").message, "");
    EXPECT_EQ(pairs[other].second->request("account.list").message, "");
  }
  EXPECT_EQ(loginThrough(world_->relay2.port(), "t3", pairs[2].desk.token())->request("account.list").message, "");
}

TEST_F(RelayCluster, CarriesLongRepliesPastASlowPhone) {
  const std::string accounts = fmt::format("[{}]", fmt::join(std::vector(1000, 1), ","));
  const auto slow = login();
  slow->send(R"({"id":1,"topic":"monitor.list","data":)" + accounts + "}");
  EXPECT_GT(login()->request("monitor.list", accounts).data.size(), size_t{5} << 20);
}

// What a terminal serves by itself comes through a relay too, compressed if the phone takes that.
TEST_F(RelayCluster, CarriesHistoryPricesAndCompression) {
  const FarTerminal desk(world_->cluster, "t4", {"--quotes", "walk"});
  const auto phone = loginThrough(world_->relay1.port(), "t4", desk.token());
  EXPECT_THAT(phone->request("equity.list", R"({"index":1,"from":0,"to":9000000000000,"points":5})").data,
              HasSubstr("\"equity\""));
  EXPECT_THAT(phone->request("quote.curve", R"({"hashCodes":[1000001],"points":5})").data, HasSubstr("\"prices\""));
  EXPECT_THAT(phone->request("quote.watch", "[1000001]").data, HasSubstr("\"hashCode\":1000001"));
  EXPECT_THAT(phone->waitPush("quote.push").data, HasSubstr("\"hashCode\":1000001"));

  std::string upgrade = kUpgrade;
  RawSocket socket(world_->relay1.port());
  socket << upgrade.insert(upgrade.size() - 2, "Sec-WebSocket-Extensions: permessage-deflate\r\n");
  EXPECT_THAT(socket.readUntil("\r\n\r\n"), HasSubstr("permessage-deflate"));
  const auto expect = [&](const std::string& end) { EXPECT_THAT(socket.readUntil(end), EndsWith(end)); };
  socket << frame(loginFrame("t4", desk.token()));
  expect("rights");
  socket << frame(R"({"id":2,"topic":"quote.list"})");
  expect("\xC1\x7E");  // the head of a long compressed frame
}

// Not even a server that is stopped keeps the sockets' thread waiting, and what was sent meanwhile arrives.
TEST_F(RelayCluster, SendsPastAServerThatIsStopped) {
  const std::vector<std::string> urls = world_->cluster.urlList();
  const std::string subject = upSubject({"t1", "test"}, {"r2", "test"});
  Listening receiver({urls[0]}, credentials("t1"), {subject});
  Listening sender({urls[2]}, credentials("r2"), {});
  ASSERT_TRUE(holdsSoon([&] { return receiver.isUp() && sender.isUp(); }));
  world_->cluster.server(2).send(SIGSTOP);
  for (int i = 0; i < 120; ++i) sender.publish(subject, std::string(60'000, static_cast<char>('a' + i % 26)));
  EXPECT_EQ(sender.fault(), "");  // which the thread answers
  world_->cluster.server(2).send(SIGCONT);
  EXPECT_TRUE(holdsSoon([&] { return receiver.heard().size() == 120; })) << receiver.heard().size();
  EXPECT_EQ(receiver.heard().back().bytes.front(), 'a' + 119 % 26);
}

TEST_F(RelayCluster, RefusesASecondTerminalOfTheName) {
  const auto phone = login();
  const TempDir dir;
  const Outcome second = runProgram(POCKET_TERMINAL, world_->cluster.terminalArguments("t1", dir.path()));
  EXPECT_EQ(second.error,
            "pocket-terminal: a terminal with the name t1 is present already: end it, or give this one another name "
            "with pocket-relay setup\n");
  EXPECT_EQ(second.exitCode, 1);
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
  EXPECT_EQ(tryLogin(world_->relay1.port(), "t1", "wrong"), 4401);  // the relay has processed what came before
  EXPECT_TRUE(hostile->heard().empty());
  // With its own credentials the same message counts.
  listen("t1", {})->publish(presenceSubject("t1"), leaving);
  EXPECT_EQ(phone->waitClose(), 1013);
}

TEST_F(RelayCluster, RefusesClientsWithoutItsCredentials) {
  const Credentials good = credentials("t1");
  natsOptions* options = nullptr;
  natsConnection* connection = nullptr;
  natsOptions_Create(&options);
  natsOptions_SetURL(options, world_->cluster.urlList()[0].c_str());
  natsOptions_SetSecure(options, true);
  natsOptions_LoadCATrustedCertificates(options, good.file.c_str());
  EXPECT_EQ(natsConnection_Connect(&connection, options), NATS_CONNECTION_AUTH_FAILED);
  natsOptions_Destroy(options);
  const auto failsWith = [](Listening& link, const char* why) {
    return holdsSoon([&] { return link.fault().find(why) != std::string::npos; });
  };
  Listening stranger(world_->cluster.urlList(), {"t1", NKey::make(), good.page, good.authority, good.file}, {});
  EXPECT_TRUE(failsWith(stranger, "refuses the credentials")) << stranger.fault();
  Listening distrustful(world_->cluster.urlList(), {"t1", good.key, good.page, {}, {}}, {});
  EXPECT_TRUE(failsWith(distrustful, "ertificate")) << distrustful.fault();
}

TEST_F(RelayCluster, ShowsHealthAndMetrics) {
  const auto phone = login();
  EXPECT_THAT(httpGet(world_->relay1.port(), "/health"), HasSubstr(R"("cluster:connection":[{"status":"pass")"));
  EXPECT_THAT(httpGet(world_->relay1.port(), "/metrics"), HasSubstr("\npocket_relay_terminals "));
  EXPECT_THAT(httpGet(world_->relay1.port(), "/"), HasSubstr("<html"));
}

}  // namespace
}  // namespace orvane::test
