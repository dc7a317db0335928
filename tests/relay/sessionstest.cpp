#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "terminal/relay/switchboard.h"
#include "terminal/relay/terminalport.h"
#include "tests/relay/fakebus.h"

namespace orvane::test {
namespace {

using namespace terminal::relay;
using terminal::CloseCode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using namespace std::chrono_literals;

// The terminal's owner of sessions, in the place of what clients may say.
class FakeOwner : public terminal::ISessionOwner {
 public:
  void onOpened(std::shared_ptr<terminal::Session> session) override { sessions.push_back(std::move(session)); }
  void onFrame(terminal::Session& /*session*/, std::string_view text) override { frames.emplace_back(text); }
  void onClosed(terminal::Session& session) override {
    std::erase_if(sessions, [&](const auto& each) { return each.get() == &session; });
  }

  std::vector<std::shared_ptr<terminal::Session>> sessions;
  std::vector<std::string> frames;
};

// One run of a terminal.
struct Desk {
  Desk(FakeLoop& loop, FakeNetwork& network, const std::string& name)
      : bus(network), port(loop, bus, owner, {.name = name, .onRefused = [this] { isRefused = true; }}) {
    port.start();
  }
  bool isRefused = false;
  FakeNetwork::Bus bus;
  FakeOwner owner;
  TerminalPort port;
};

class RelaySessions : public testing::Test {
 protected:
  RelaySessions() {
    board_.start();
    pass(2s);
  }

  // Lets messages and timers run, in steps that are shorter than any limit.
  void pass(std::chrono::milliseconds time) {
    for (; time > 0ms; time -= 100ms) {
      loop_.advance(100ms);
      settle();
    }
  }
  void settle() {
    while (loop_.runPosted()) continue;
  }

  std::unique_ptr<Desk> startDesk(const std::string& name) {
    auto desk = std::make_unique<Desk>(loop_, network_, name);
    pass(2s);
    return desk;
  }

  std::shared_ptr<FakeSession> phone(const std::string& terminal, const std::string& address = "10.0.0.1") {
    auto session = std::make_shared<FakeSession>(address);
    board_.onOpened(session);
    say(*session, R"({"id":1,"topic":"login","terminal":")" + terminal + R"(","token":"t"})");
    return session;
  }
  void say(FakeSession& session, const std::string& text) {
    board_.onFrame(session, text);
    settle();
  }

  // The phone's transport has taken what was sent.
  void take(FakeSession& session) {
    for (const std::string& each : session.take()) board_.onSent(session, each.size());
    settle();
  }

  FakeLoop loop_;
  FakeNetwork network_{loop_};
  FakeNetwork::Bus relayBus_{network_};
  Switchboard board_{loop_, relayBus_, "r1", 10s};
};

TEST_F(RelaySessions, BringFramesBothWays) {
  const auto desk = startDesk("desk7");
  const auto session = phone("desk7", "10.1.2.3");
  ASSERT_EQ(desk->owner.sessions.size(), 1U);
  terminal::Session& far = *desk->owner.sessions[0];
  EXPECT_EQ(far.address(), "10.1.2.3");
  EXPECT_EQ(far.network(), "10.1.2.3");
  EXPECT_EQ(far.name(), "phone 1 of relay r1");
  say(*session, "second");
  EXPECT_THAT(desk->owner.frames, ElementsAre(HasSubstr(R"("token":"t")"), "second"));
  far.send(std::make_shared<const std::string>("answer"));
  far.admit();
  settle();
  EXPECT_THAT(session->take(), ElementsAre("answer"));
  EXPECT_TRUE(session->isAdmitted);
  far.close(CloseCode::NotEntitled, "no rights");
  settle();
  EXPECT_EQ(session->closeCode(), CloseCode::NotEntitled);
  EXPECT_TRUE(desk->owner.sessions.empty());
  board_.onClosed(*session);
}

TEST_F(RelaySessions, EndWithTheirPhones) {
  const auto desk = startDesk("desk7");
  const auto session = phone("desk7");
  board_.onClosed(*session);
  settle();
  EXPECT_TRUE(desk->owner.sessions.empty());
}

TEST_F(RelaySessions, AreRefusedWithAReason) {
  const auto desk = startDesk("desk7");
  const struct {
    const char* frame;
    CloseCode code;
    const char* text;
  } rows[] = {
      {R"({"id":"a","topic":"login","terminal":"desk8","token":"t"})", CloseCode::NoTerminal,
       R"({"id":"a","topic":"login","message":"this relay has not seen a terminal with the name desk8","data":null})"},
      {R"({"topic":"login","token":"t"})", CloseCode::NoTerminal, "must be the terminal's name"},
      {R"({"topic":"login","terminal":"desk7.*"})", CloseCode::NoTerminal, "must be the terminal's name"},
      {R"({"topic":"login","terminal":7})", CloseCode::NoTerminal, "must be the terminal's name"},
      {R"({"topic":"account.list","terminal":"desk7"})", CloseCode::NoLogin, "log in first"},
      {R"([])", CloseCode::NoLogin, R"({"id":null,)"},
      {R"({"id":)", CloseCode::NoLogin, "log in first"},
  };
  for (const auto& row : rows) {
    const auto session = std::make_shared<FakeSession>();
    board_.onOpened(session);
    say(*session, row.frame);
    EXPECT_EQ(session->closeCode(), row.code) << row.frame;
    EXPECT_THAT(session->take(), ElementsAre(HasSubstr(row.text)));
    board_.onClosed(*session);
  }
  EXPECT_TRUE(desk->owner.sessions.empty());
  const auto silent = std::make_shared<FakeSession>();
  board_.onOpened(silent);
  pass(11s);
  EXPECT_EQ(silent->closeCode(), CloseCode::NoLogin);
}

TEST_F(RelaySessions, SeeWhoIsAwaySinceWhen) {
  auto desk = startDesk("desk7");
  const auto session = phone("desk7");
  desk->bus.stop();
  pass(6s);
  EXPECT_EQ(session->closeCode(), CloseCode::TryLater);
  const auto late = phone("desk7");
  EXPECT_THAT(late->take(),
              ElementsAre(MatchesRegex(R"(.*the terminal desk7 is away; it was last seen at 2026-09-21T[0-9:]{8}Z",)"
                                       R"("data":null,"seen":"2026-09-21T[0-9:]{8}Z"\})")));
  EXPECT_EQ(late->closeCode(), CloseCode::TryLater);
}

TEST_F(RelaySessions, EndWithTheirTerminal) {
  const auto first = startDesk("desk7");
  const auto session = phone("desk7");
  first->bus.setUp(false);
  const auto second = startDesk("desk7");
  EXPECT_EQ(session->closeCode(), CloseCode::Restarted);
  EXPECT_FALSE(phone("desk7")->isClosing());
  EXPECT_TRUE(first->owner.sessions.empty());
  EXPECT_EQ(second->owner.sessions.size(), 1U);
}

TEST_F(RelaySessions, CloseWithTheTerminalsOwnCode) {
  const auto desk = startDesk("desk7");
  const auto session = phone("desk7");
  desk->port.stop();
  pass(1s);
  EXPECT_EQ(session->closeCode(), CloseCode::GoingAway);
  EXPECT_THAT(phone("desk7")->take(), ElementsAre(HasSubstr("is away")));
}

// One lost message, in each direction, even if none follows but the beat.
TEST_F(RelaySessions, EndWhenAMessageIsLost) {
  const auto desk = startDesk("desk7");
  for (const bool isUp : {true, false}) {
    const auto session = phone("desk7");
    const auto other = phone("desk7");
    network_.passes = [&](std::string_view subject, std::string_view bytes) {
      return !subject.starts_with(isUp ? "pocket.up." : "pocket.down.") || !bytes.ends_with("lost");
    };
    if (isUp) {
      say(*session, "lost");
    } else {
      desk->owner.sessions.front()->send(std::make_shared<const std::string>("lost"));
    }
    pass(2s);
    EXPECT_EQ(session->closeCode(), CloseCode::TryLater);
    EXPECT_EQ(other->closeCode(), CloseCode::TryLater);
    EXPECT_TRUE(desk->owner.sessions.empty());
    EXPECT_FALSE(phone("desk7")->isClosing());
    desk->owner.sessions.front()->close(CloseCode::Fault, "next");
    settle();
  }
}

TEST_F(RelaySessions, EndWhenTheChannelIsSilent) {
  const auto desk = startDesk("desk7");
  const auto session = phone("desk7");
  network_.passes = [](std::string_view subject, std::string_view) { return !subject.starts_with("pocket.up."); };
  pass(7s);
  EXPECT_EQ(session->closeCode(), CloseCode::TryLater);
  EXPECT_TRUE(desk->owner.sessions.empty());
}

TEST_F(RelaySessions, EndWithTheBus) {
  const auto desk = startDesk("desk7");
  const auto session = phone("desk7");
  relayBus_.setUp(false);
  EXPECT_EQ(session->closeCode(), CloseCode::TryLater);
  EXPECT_THAT(phone("desk7")->take(), ElementsAre(HasSubstr("no connection to the terminals now")));
  relayBus_.setUp(true);
  EXPECT_THAT(phone("desk9")->take(), ElementsAre(HasSubstr("only just connected")));
  pass(2s);
  EXPECT_FALSE(phone("desk7")->isClosing());
}

TEST_F(RelaySessions, CarryAPushOnceForAll) {
  const auto desk = startDesk("desk7");
  std::vector<std::shared_ptr<FakeSession>> phones;
  for (int i = 0; i < 20; ++i) phones.push_back(phone("desk7"));
  const size_t before = network_.published;
  const auto push = std::make_shared<const std::string>("push");
  for (const auto& each : desk->owner.sessions) each->send(push);
  settle();
  EXPECT_EQ(network_.published, before + 1);
  for (const auto& each : phones) EXPECT_THAT(each->take(), ElementsAre("push"));
}

// A phone that takes nothing holds a window's bytes at the relay and the rest at its terminal, until it is too slow.
// Its neighbour gets everything.
TEST_F(RelaySessions, SlowNoNeighbour) {
  const auto desk = startDesk("desk7");
  const auto slow = phone("desk7");
  const auto fast = phone("desk7");
  const std::string text(100'000, 'x');
  size_t got = 0;
  for (int i = 0; i < 60; ++i) {
    for (const auto& each : desk->owner.sessions) each->send(std::make_shared<const std::string>(text));
    settle();
    for (const std::string& each : fast->sent) got += each.size();
    take(*fast);
  }
  EXPECT_EQ(got, 60 * text.size());
  size_t held = 0;
  for (const std::string& each : slow->sent) held += each.size();
  EXPECT_EQ(held, kWindowBytes);
  pass(4s);
  EXPECT_EQ(slow->closeCode(), CloseCode::TooSlow);
  EXPECT_FALSE(fast->isClosing());
}

// Pieces of a long frame arrive whole and in order, with frames behind it.
TEST_F(RelaySessions, CarryLongFrames) {
  const auto desk = startDesk("desk7");
  const auto session = phone("desk7");
  std::string list(12'800'000, ' ');
  for (size_t i = 0; i < list.size(); ++i) list[i] = static_cast<char>('a' + i % 23);
  desk->owner.sessions.front()->send(std::make_shared<const std::string>(list));
  desk->owner.sessions.front()->send(std::make_shared<const std::string>("next"));
  std::string got;
  do {
    settle();
    for (const std::string& each : session->sent) got += each;
    if (session->sent.empty()) break;
    take(*session);
  } while (true);
  EXPECT_TRUE(got == list + "next");
}

TEST_F(RelaySessions, RefuseASecondTerminalOfTheName) {
  const auto first = startDesk("desk7");
  const auto second = startDesk("desk7");
  EXPECT_TRUE(second->isRefused);
  EXPECT_FALSE(first->isRefused);
  const auto session = phone("desk7");
  EXPECT_EQ(first->owner.sessions.size(), 1U);
  EXPECT_TRUE(second->owner.sessions.empty());
  pass(10s);
  EXPECT_FALSE(session->isClosing());
  EXPECT_THAT(second->port.fault(), HasSubstr("another terminal with the name desk7 is present"));
}

// Both believed to be alone; the one that started first stays.
TEST_F(RelaySessions, EndAtTheYoungerOfTwoTerminals) {
  const auto first = startDesk("desk7");
  first->bus.setUp(false);
  loop_.jump(1s);
  const auto second = startDesk("desk7");
  const auto session = phone("desk7");
  EXPECT_EQ(second->owner.sessions.size(), 1U);
  first->bus.setUp(true);
  pass(3s);
  EXPECT_TRUE(second->owner.sessions.empty());
  EXPECT_TRUE(session->isClosing());
  EXPECT_FALSE(phone("desk7")->isClosing());
  EXPECT_EQ(first->owner.sessions.size(), 1U);
}

}  // namespace
}  // namespace orvane::test
