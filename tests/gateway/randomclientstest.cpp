#include <array>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/gateway/clientcheck.h"
#include "tests/support/randomsteps.h"

namespace orvane::test {
namespace {

// Clients that do random things, each with what the model expects of it.
class RandomClients : RandomSteps {
 public:
  explicit RandomClients(uint32_t seed) : RandomSteps(seed) {
    check_.addToken(7);
    check_.start();
    for (int i = 0; i < 4; ++i) check_.addToken(static_cast<int>(pick(0, 7)));
  }

  // Runs until a difference or the end.
  void run(int steps) {
    for (int i = 1; i <= steps && !testing::Test::HasFailure(); ++i) {
      const std::string what = step(i);
      SCOPED_TRACE(fmt::format("step {}: {}", i, what));
      check_.compare();
    }
    if (testing::Test::HasFailure()) return;
    check_.answerAll();
    check_.comparePages();
    check_.compareAudit();
  }

 private:
  std::string nextId() { return chance(50) ? std::to_string(++lastId_) : fmt::format("\"i{}\"", ++lastId_); }
  model::World& world() { return check_.world(); }

  // Does one random thing to both and returns what.
  std::string step(int number) {
    if (number % 40 == 0) return rareStep(number / 40 % 6);
    const int64_t what = pick(1, 989);
    if (world().clients.empty() || what <= 60) return connect();
    const int client =
        std::next(world().clients.begin(), pick(0, static_cast<int64_t>(world().clients.size()) - 1))->first;
    if (what <= 190 || (world().clients[client].token < 0 && what <= 600)) return login(client);
    if (what <= 650) return request(client);
    if (what <= 680) return check_.badFrame(client);
    if (what <= 800) return check_.answerOne(reply(), static_cast<size_t>(pick(0, 3)));
    if (what <= 880) return push(1);
    if (what <= 905) return check_.hangUp(client);
    if (what <= 950) return wait();
    if (what <= 960) return tokens();
    if (what <= 970) return changeAgent();
    if (what <= 980) return pages();
    return check_.restart();
  }

  // Each is done in its turn.
  std::string rareStep(int turn) {
    if (turn == 1) return crowd();
    if (turn == 2) return push(1100);
    if (turn == 3) return guesses();
    if (turn == 4) return heavyCrowd();
    return turn == 5 ? crowdOfClients() : check_.sleep(3 * 24 * 3600);
  }

  std::string connect() {
    if (world().clients.size() >= 12) return "nothing";
    return check_.connect(fmt::format("127.0.0.{}", pick(1, 2)));
  }

  std::string login(int client) {
    model::Login frame{.id = nextId(), .token = oneOf(world().tokens).second.text, .device = {}, .resume = {}};
    if (chance(20)) frame.token = "guess";
    if (chance(50)) frame.device = oneOf(std::array{"d1", "d2"});
    if (chance(50)) {
      const auto last = static_cast<int64_t>(check_.lastPush());
      const std::string epoch = chance(80) ? world().epoch : "0123456789abcdef";
      frame.resume = {
          epoch, static_cast<uint64_t>(chance(80) ? pick(std::max<int64_t>(last - 5, 0), last) : pick(0, last + 2))};
    }
    return check_.login(client, frame);
  }

  std::string request(int client) {
    const int token = world().clients[client].token;
    model::Request frame{
        .id = nextId(), .terminalType = chance(80) ? 8 : 24, .topic = {}, .data = {}, .key = {}, .bodyFault = {}};
    if (!sent_.empty() && chance(40)) {
      const auto& [sender, sent] = oneOf(sent_);  // the same once more, perhaps changed
      frame = sent;
      frame.id = nextId();
      if (sender != token) frame.data = bodyFor(frame.topic);
      if (chance(10)) frame.terminalType = 9;
      if (chance(10) && frame.data.starts_with('{')) {
        frame.topic = frame.topic == "order.new" ? "quote.set" : "order.new";
      }
      if (chance(10)) frame.data = bodyFor(frame.topic);
      return check_.request(client, frame);
    }
    frame.topic = oneOf(std::array{"account.list", "order.list", "monitor.list", "no.such.topic", "order.cancel",
                                   "order.new", "order.new", "quote.set", "monitor.manual.clean",
                                   "monitor.sync.order.new", "monitor.sync.order.new"});
    frame.data = bodyFor(frame.topic);
    if (chance(10)) spoilBody(frame);
    const bool isAction = frame.topic.find(".list") == std::string::npos && frame.topic != "no.such.topic";
    if (chance(isAction ? 80 : 5)) frame.key = fmt::format("k{}", isAction && chance(70) ? ++lastId_ : pick(1, 9));
    if (isAction && !frame.key.empty() && frame.bodyFault.empty()) sent_.emplace_back(token, frame);
    if (sent_.size() > 20) sent_.pop_front();
    return check_.request(client, frame);
  }

  static bool isListOfObjects(const std::string& topic) {
    return topic == "order.cancel" || topic == "monitor.manual.clean" || topic == "monitor.sync.order.new";
  }

  // New, so that each call of the library can be told from the others.
  std::string bodyFor(const std::string& topic) {
    const std::string space(chance(90) ? 0 : 1100, ' ');  // too long for the audit line of a refusal
    const std::string object = fmt::format(R"({{"orderList":[],"n":{}{}}})", space, ++lastId_);
    return isListOfObjects(topic) ? "[" + object + "]" : object;
  }

  // A body that the gateway refuses, if it checks those of the topic.
  static void spoilBody(model::Request& frame) {
    if (isListOfObjects(frame.topic)) {
      frame.data = "[7]";
      frame.bodyFault = "element 1 of data must be an object, not a number";
    } else if (frame.topic == "order.new") {
      frame.data = "[]";
      frame.bodyFault = R"(data must be an object with the array "orderList", not an array)";
    }
  }

  model::Reply reply() {
    const int64_t what = pick(1, 10);
    if (what <= 6) return {"", "", fmt::format("[{}]", ++lastId_), ""};
    if (what <= 8) return {"unknown.topic", "Data member not array", "", ""};
    return {"", "", "", what == 9 ? "no JSON" : "[1"};
  }

  std::string push(int count) {
    for (int i = 0; i < count; ++i) {
      const std::string text = fmt::format("[{}]", ++lastId_);
      if (chance(40)) {
        check_.push({"terminal.notice", text, "", ""});
      } else {
        check_.push({oneOf(std::array{"order.push", "trade.push"}), "", text, ""});
      }
    }
    return fmt::format("{} pushes", count);
  }

  std::string wait() {
    if (chance(20)) return check_.wait(oneOf(std::array{9, 10, 11, 58, 59, 60}));
    return check_.wait(pick(1, 3));
  }

  // The first token stays valid, so that something goes on. First the answers to wrong tokens are waited for: which of
  // two ends at the same second comes first is left open.
  std::string tokens() {
    check_.wait(1);
    if (chance(40) || world().tokens.size() < 3) return check_.addToken(static_cast<int>(pick(0, 7)));
    const int token = static_cast<int>(pick(1, static_cast<int64_t>(world().tokens.size()) - 1));
    return chance(50) ? check_.revoke(token) : check_.expire(token, pick(1, 5));
  }

  std::string changeAgent() {
    check_.answerAll();
    return check_.setAgent(!world().hasAgent);
  }

  std::string pages() {
    if (chance(50)) check_.answerAll();
    check_.comparePages();
    check_.compareAudit();
    return "pages and audit";
  }

  int logIn(const std::string& address, const std::string& token) {
    check_.connect(address);
    const int client = world().clients.rbegin()->first;
    check_.login(client, {.id = nextId(), .token = token, .device = {}, .resume = {}});
    return client;
  }

  // More wrong tokens than one address may send within a minute, and those at its end and after it.
  std::string guesses() {
    for (int i = 0; i < 11; ++i) logIn("127.0.0.3", "guess");
    for (const int seconds : {59, 1}) {
      check_.wait(seconds);
      logIn("127.0.0.3", "guess");
    }
    return "13 wrong tokens";
  }

  // More requests than may wait.
  std::string crowd() {
    const int client = logIn("127.0.0.4", world().tokens.at(0).text);
    check_.settle();  // frames that are held for a login are fewer
    const int64_t count = chance(50) ? 1030 : 2100;
    for (int64_t i = 0; i < count; ++i) check_.request(client, listRequest(bodyFor("account.list")));
    return fmt::format("{} requests of client {}", count, client);
  }

  // More bytes of requests than may wait, which those of another token do not share.
  std::string heavyCrowd() {
    const int client = logIn("127.0.0.4", world().tokens.at(0).text);
    check_.settle();
    check_.answerAll();
    for (int i = 0; i < 40; ++i) {
      check_.request(client, listRequest(fmt::format("[{}{}]", ++lastId_, std::string(250'000, ' '))));
    }
    check_.addToken(model::kSee);
    check_.request(logIn("127.0.0.4", world().tokens.rbegin()->second.text), listRequest(bodyFor("account.list")));
    return fmt::format("40 long requests of client {}", client);
  }

  model::Request listRequest(std::string data) {
    return {.id = nextId(), .topic = "account.list", .data = std::move(data), .key = {}, .bodyFault = {}};
  }

  // More clients than one token may have.
  std::string crowdOfClients() {
    std::vector<int> clients;
    for (int i = 0; i < 87; ++i) {
      clients.push_back(logIn("127.0.0.4", world().tokens.at(0).text));
      check_.compare();
    }
    for (const int client : clients) {
      if (world().isOpen(client)) check_.hangUp(client);
    }
    return "87 clients of one token";
  }

  ClientCheck check_;
  std::deque<std::pair<int, model::Request>> sent_;  // with a key, by token
  int64_t lastId_ = 100;
};

TEST(RandomClientsTest, GetWhatTheModelSays) {
  runSeeds("RANDOM_CLIENTS", 4, [](uint32_t seed) { RandomClients(seed).run(250); });
}

}  // namespace
}  // namespace orvane::test
