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
  void onFrame(terminal::Session& /*session_*/, std::string_view text) override { frames.emplace_back(text); }
  void onClosed(terminal::Session& session) override {
    std::erase_if(sessions, [&](const auto& each) { return each.get() == &session; });
  }

  std::vector<std::shared_ptr<terminal::Session>> sessions;
  std::vector<std::string> frames;
};

// One run of a terminal.
struct Desk {
  Desk(FakeLoop& loop, FakeNetwork& network)
      : bus(network), port(loop, bus, owner, {.name = "desk7", .onRefused = [this] { isRefused = true; }}) {
    port.start();
  }
  bool isRefused = false;
  FakeNetwork::Bus bus;
  FakeOwner owner;
  TerminalPort port;
};

terminal::Session::Text shared(std::string text) { return std::make_shared<const std::string>(std::move(text)); }

class RelaySessions : public testing::Test {
 protected:
  RelaySessions() {
    board_.start();
    pass(2s);
    desk_ = startDesk();
    session_ = phone();
  }

  // Lets messages and timers run, in steps that are shorter than any limit.
  void pass(std::chrono::milliseconds time) {
    for (; time > 0ms; time -= 100ms) {
      loop_.time.advance(100ms);
      settle();
    }
  }
  void settle() {
    while (loop_.runPosted()) continue;
  }

  std::unique_ptr<Desk> startDesk() {
    auto desk = std::make_unique<Desk>(loop_, network_);
    pass(2s);
    return desk;
  }

  std::shared_ptr<FakeSession> open() {
    auto session = std::make_shared<FakeSession>();
    board_.onOpened(session);
    return session;
  }
  std::shared_ptr<FakeSession> phone(const std::string& terminal = "desk7") {
    auto session = open();
    say(*session, R"({"id":1,"topic":"login","terminal":")" + terminal + R"(","token":"t"})");
    return session;
  }
  void say(FakeSession& session, const std::string& text) {
    board_.onFrame(session, text);
    settle();
  }

  // The phone's transport takes what was sent.
  std::string take(FakeSession& session) {
    std::string taken;
    for (const std::string& each : session.take()) {
      taken += each;
      board_.onSent(session, each.size());
    }
    settle();
    return taken;
  }

  FakeLoop loop_;
  FakeNetwork network_{loop_};
  FakeNetwork::Bus relayBus_{network_};
  Switchboard board_{loop_, relayBus_, "r1", 10s};
  std::unique_ptr<Desk> desk_;
  std::shared_ptr<FakeSession> session_;
};

TEST_F(RelaySessions, BringFramesBothWays) {
  ASSERT_EQ(desk_->owner.sessions.size(), 1U);
  terminal::Session& far = *desk_->owner.sessions[0];
  EXPECT_EQ(far.address(), "10.0.0.1");
  EXPECT_EQ(far.network(), "10.0.0.1");
  EXPECT_EQ(far.name(), "phone 1 of relay r1");
  say(*session_, "second");
  EXPECT_THAT(desk_->owner.frames, ElementsAre(HasSubstr(R"("token":"t")"), "second"));
  far.send(shared("answer"));
  far.admit();
  settle();
  EXPECT_THAT(session_->take(), ElementsAre("answer"));
  EXPECT_TRUE(session_->isAdmitted);
  far.close(CloseCode::NotEntitled, "no rights");
  settle();
  EXPECT_EQ(session_->closeCode(), CloseCode::NotEntitled);
  EXPECT_TRUE(desk_->owner.sessions.empty());
  board_.onClosed(*session_);
}

TEST_F(RelaySessions, EndWithTheirPhones) {
  board_.onClosed(*session_);
  settle();
  EXPECT_TRUE(desk_->owner.sessions.empty());
}

TEST_F(RelaySessions, AreRefusedWithAReason) {
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
    const auto session = open();
    say(*session, row.frame);
    EXPECT_EQ(session->closeCode(), row.code) << row.frame;
    EXPECT_THAT(session->take(), ElementsAre(HasSubstr(row.text)));
    board_.onClosed(*session);
  }
  EXPECT_EQ(desk_->owner.sessions.size(), 1U);
  const auto silent = open();
  pass(11s);
  EXPECT_EQ(silent->closeCode(), CloseCode::NoLogin);
}

TEST_F(RelaySessions, SeeWhoIsAwaySinceWhen) {
  desk_->bus.stop();
  pass(6s);
  EXPECT_EQ(session_->closeCode(), CloseCode::TryLater);
  const auto late = phone();
  EXPECT_THAT(late->take(),
              ElementsAre(MatchesRegex(R"(.*the terminal desk7 is away; it was last seen at 2026-09-21T[0-9:]{8}Z",)"
                                       R"("data":null,"seen":"2026-09-21T[0-9:]{8}Z"\})")));
  EXPECT_EQ(late->closeCode(), CloseCode::TryLater);
}

TEST_F(RelaySessions, EndWithTheirTerminal) {
  desk_->bus.setUp(false);
  const auto second = startDesk();
  EXPECT_EQ(session_->closeCode(), CloseCode::Restarted);
  EXPECT_FALSE(phone()->isClosing());
  EXPECT_TRUE(desk_->owner.sessions.empty());
  EXPECT_EQ(second->owner.sessions.size(), 1U);
}

TEST_F(RelaySessions, CloseWithTheTerminalsOwnCode) {
  desk_->port.stop();
  pass(1s);
  EXPECT_EQ(session_->closeCode(), CloseCode::GoingAway);
  EXPECT_THAT(phone()->take(), ElementsAre(HasSubstr("is away")));
}

// One lost message, in each direction, even if none follows but the beat.
TEST_F(RelaySessions, EndWhenAMessageIsLost) {
  for (const bool isUp : {true, false}) {
    const auto session = phone();
    const auto other = phone();
    network_.passes = [&](std::string_view subject, std::string_view bytes) {
      return !subject.starts_with(isUp ? "pocket.up." : "pocket.down.") || !bytes.ends_with("lost");
    };
    if (isUp) {
      say(*session, "lost");
    } else {
      desk_->owner.sessions.front()->send(shared("lost"));
    }
    pass(2s);
    EXPECT_EQ(session->closeCode(), CloseCode::TryLater);
    EXPECT_EQ(other->closeCode(), CloseCode::TryLater);
    EXPECT_TRUE(desk_->owner.sessions.empty());
    EXPECT_FALSE(phone()->isClosing());
    desk_->owner.sessions.front()->close(CloseCode::Fault, "next");
    settle();
  }
}

TEST_F(RelaySessions, EndWhenTheChannelIsSilent) {
  network_.passes = [](std::string_view subject, std::string_view) { return !subject.starts_with("pocket.up."); };
  pass(7s);
  EXPECT_EQ(session_->closeCode(), CloseCode::TryLater);
  EXPECT_TRUE(desk_->owner.sessions.empty());
}

TEST_F(RelaySessions, EndWithTheBus) {
  relayBus_.setUp(false);
  EXPECT_EQ(session_->closeCode(), CloseCode::TryLater);
  EXPECT_THAT(phone()->take(), ElementsAre(HasSubstr("no connection to the terminals now")));
  relayBus_.setUp(true);
  EXPECT_THAT(phone("desk9")->take(), ElementsAre(HasSubstr("only just connected")));
  pass(2s);
  EXPECT_FALSE(phone()->isClosing());
}

TEST_F(RelaySessions, CarryAPushOnceForAll) {
  std::vector<std::shared_ptr<FakeSession>> phones;
  for (int i = 0; i < 20; ++i) phones.push_back(phone());
  const size_t before = network_.published;
  const auto push = shared("push");
  for (const auto& each : desk_->owner.sessions) each->send(push);
  settle();
  EXPECT_EQ(network_.published, before + 1);
  for (const auto& each : phones) EXPECT_THAT(each->take(), ElementsAre("push"));
}

// A phone that takes nothing holds a window's bytes at the relay and the rest at its terminal, until it is too slow.
// Its neighbour gets everything.
TEST_F(RelaySessions, SlowNoNeighbour) {
  const auto fast = phone();
  const std::string text(100'000, 'x');
  size_t got = 0;
  for (int i = 0; i < 60; ++i) {
    for (const auto& each : desk_->owner.sessions) each->send(shared(text));
    settle();
    got += take(*fast).size();
  }
  EXPECT_EQ(got, 60 * text.size());
  size_t held = 0;
  for (const std::string& each : session_->sent) held += each.size();
  EXPECT_EQ(held, kWindowBytes);
  pass(4s);
  EXPECT_EQ(session_->closeCode(), CloseCode::TooSlow);
  EXPECT_FALSE(fast->isClosing());
}

// Pieces of a long frame arrive whole and in order, with frames behind it.
TEST_F(RelaySessions, CarryLongFrames) {
  std::string list(12'800'000, ' ');
  for (size_t i = 0; i < list.size(); ++i) list[i] = static_cast<char>('a' + i % 23);
  desk_->owner.sessions.front()->send(shared(list));
  desk_->owner.sessions.front()->send(shared("next"));
  settle();
  std::string got;
  for (std::string piece = take(*session_); !piece.empty(); piece = take(*session_)) got += piece;
  EXPECT_TRUE(got == list + "next");
}

TEST_F(RelaySessions, RefuseASecondTerminalOfTheName) {
  const auto second = startDesk();
  EXPECT_TRUE(second->isRefused);
  EXPECT_FALSE(desk_->isRefused);
  const auto late = phone();
  EXPECT_EQ(desk_->owner.sessions.size(), 2U);
  EXPECT_TRUE(second->owner.sessions.empty());
  pass(10s);
  EXPECT_FALSE(session_->isClosing());
  EXPECT_FALSE(late->isClosing());
  EXPECT_THAT(second->port.fault(), HasSubstr("another terminal with the name desk7 is present"));
}

// Both believed to be alone; the one that started first stays.
TEST_F(RelaySessions, EndAtTheYoungerOfTwoTerminals) {
  desk_->bus.setUp(false);
  loop_.time.jump(1s);
  const auto second = startDesk();
  const auto session = phone();
  EXPECT_EQ(second->owner.sessions.size(), 1U);
  desk_->bus.setUp(true);
  pass(3s);
  EXPECT_TRUE(second->owner.sessions.empty());
  EXPECT_TRUE(session->isClosing());
  EXPECT_FALSE(phone()->isClosing());
  EXPECT_EQ(desk_->owner.sessions.size(), 1U);
}

}  // namespace
}  // namespace orvane::test
