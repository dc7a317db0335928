#include "tests/gateway/clientcheck.h"

#include <fstream>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "terminal/tokens.h"
#include "tests/support/holdssoon.h"
#include "tests/support/rawsocket.h"

namespace orvane::test {
namespace {

int64_t wallSeconds(const FakeTime& time) { return std::chrono::system_clock::to_time_t(time.wallTime()); }

std::multiset<std::string> linesOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::multiset<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.insert(line);
  return lines;
}

}  // namespace

void ClientCheck::start() {
  model_.world.now = wallSeconds(rig_.time());
  WireClient client(rig_.port(), "127.0.0.9");
  client.send(R"({"id":1,"topic":"login","token":")" + model_.world.tokens.at(0).text + "\"}");
  const std::string welcome = client.receive().text;
  model_.world.epoch = welcome.substr(welcome.find("\"epoch\":\"") + 9, 16);
  EXPECT_EQ(model_.world.epoch.find_first_not_of("0123456789abcdef"), std::string::npos) << welcome;
  EXPECT_TRUE(epochs_.insert(model_.world.epoch).second) << "the epoch did not change";
}

std::string ClientCheck::restart() {
  reachAll();
  rig_.stop();
  model_.restart();
  compare();
  calls_.clear();
  rig_.start();
  start();
  return "restart";
}

std::string ClientCheck::connect(const std::string& address) {
  const int client = ++lastClient_;
  wires_[client] = std::make_unique<WireClient>(rig_.port(), address);
  model_.sessions.connect(client, address);
  return fmt::format("client {} from {}", client, address);
}

std::string ClientCheck::hangUp(int client) {
  wires_.erase(client);
  model_.world.clients.erase(client);
  compareMetrics();
  return fmt::format("client {} hangs up", client);
}

// What follows must find the frame read.
void ClientCheck::send(int client, const std::string& frame) {
  wires_.at(client)->send(frame);
  wires_.at(client)->sync();
}

std::string ClientCheck::login(int client, const model::Login& login) {
  model_.sessions.login(client, login);
  std::string frame = fmt::format(R"({{"id":{},"topic":"login","token":"{}")", login.id, login.token);
  if (!login.device.empty()) frame += fmt::format(R"(,"device":"{}")", login.device);
  if (login.resume) {
    frame += fmt::format(R"(,"resume":{{"epoch":"{}","seq":{}}})", login.resume->first, login.resume->second);
  }
  send(client, frame + "}");
  return fmt::format("client {}: {}", client, frame);
}

std::string ClientCheck::request(int client, const model::Request& request) {
  takeCalls();  // these no longer wait for the library
  model_.requests.request(client, request);
  std::string frame =
      fmt::format(R"({{"id":{},"topic":"{}","terminalType":{})", request.id, request.topic, request.terminalType);
  if (!request.data.empty()) frame += ",\"data\":" + request.data;
  if (!request.key.empty()) frame += fmt::format(R"(,"key":"{}")", request.key);
  send(client, frame + "}");
  return fmt::format("client {}: {}", client, frame.substr(0, 200));
}

std::string ClientCheck::badFrame(int client) {
  model_.sessions.badFrame(client, "7", "login", R"(the frame's "token" must be a string, not a number)");
  send(client, R"({"id":7,"topic":"login","token":1})");
  return fmt::format("client {}: a login that cannot be read", client);
}

void ClientCheck::push(const model::Reply& push) {
  deliver(kNoRequestId, push);
  model_.sessions.push(push);
}

void ClientCheck::deliver(int64_t id, const model::Reply& reply) {
  MobileMessage message;
  message.requestId = id;
  message.topic = reply.topic;
  message.message = reply.message;
  message.data = reply.text.empty() ? reply.data : reply.text;
  rig_.deliver(message);
}

// Notes which requests the library has got.
void ClientCheck::takeCalls() {
  while (takeCall(std::chrono::milliseconds(0))) continue;
}

// Takes what the library has got, in its order.
bool ClientCheck::takeCall(std::chrono::milliseconds limit) {
  auto call = rig_.agent().take(limit);
  if (!call) return false;
  const std::string what = fmt::format("{} {} {}", call->terminalType, call->topic, call->data);
  const std::optional<int> number = model_.requests.called(call->terminalType, call->topic, call->data);
  EXPECT_TRUE(number) << "the library must not get this now: " << what;
  if (number) calls_.push_back({std::move(*call), *number});
  return number.has_value();
}

// Answers requests until the library has got all that are waiting.
void ClientCheck::reachAll() {
  answerUntil([this] {
    rig_.settle();
    takeCalls();
    return !model_.requests.hasCall();
  });
}

std::string ClientCheck::answerOne(model::Reply reply, size_t spread) {
  takeCalls();
  if (calls_.empty()) return "nothing";
  const size_t index = std::min(spread, calls_.size() - 1);
  answer(index, std::move(reply));
  return "a reply";
}

void ClientCheck::answer(size_t index, model::Reply reply) {
  const Call call = calls_.at(index);
  calls_.erase(calls_.begin() + static_cast<std::ptrdiff_t>(index));
  if (reply.topic.empty()) reply.topic = call.got.topic;
  deliver(call.got.id, reply);
  model_.requests.reply(call.number, reply);
}

void ClientCheck::answerAll() {
  answerUntil([this] { return calls_.empty() && !model_.requests.hasCall(); });
}

void ClientCheck::answerUntil(const std::function<bool()>& isDone) {
  while (!isDone() && !testing::Test::HasFailure()) {
    if (calls_.empty() && !takeCall(std::chrono::seconds(10))) {
      ADD_FAILURE() << "a request does not reach the library";
      return;
    }
    answer(0, {"", "", "7", ""});
    compare();
  }
}

std::string ClientCheck::setAgent(bool isThere) {
  isThere ? rig_.attachAgent() : rig_.detachAgent();
  model_.world.hasAgent = isThere;
  return fmt::format("the agent is {}", isThere ? "there" : "gone");
}

std::string ClientCheck::wait(int64_t seconds) {
  rig_.advance(std::chrono::seconds(seconds));
  model_.pass(seconds, 1);
  return fmt::format("{} s", seconds);
}

std::string ClientCheck::sleep(int64_t seconds) {
  rig_.sleep(std::chrono::seconds(seconds));
  model_.pass(seconds, seconds);
  return fmt::format("sleep for {} s", seconds);
}

std::string ClientCheck::addToken(int rights) {
  const int number = static_cast<int>(model_.world.tokens.size());
  const std::string name = fmt::format("t{}", number);
  model_.world.tokens[number] = {name, rig_.addToken(name, rights), rights, true, {}};
  return fmt::format("token {} with rights {}", name, rights);
}

std::string ClientCheck::revoke(int token) {
  if (!model_.world.tokens.at(token).isValid) return "nothing";
  reachAll();
  SQLite::Database db = rig_.openDatabase();
  terminal::revokeToken(db, model_.world.tokens[token].name);
  model_.sessions.revoke(token);
  return wait(2) + " after a token was revoked";
}

std::string ClientCheck::expire(int token, int64_t seconds) {
  if (!model_.world.tokens.at(token).isValid) return "nothing";
  reachAll();
  model_.world.tokens[token].expires = model_.world.now + seconds;
  rig_.openDatabase().exec(fmt::format("UPDATE token SET expires = {} WHERE name = '{}'", model_.world.now + seconds,
                                       model_.world.tokens[token].name));
  return wait(seconds) + " after a token got a limit";
}

void ClientCheck::compare() {
  bool hasEnded = false;
  for (auto entry = model_.world.clients.begin();
       entry != model_.world.clients.end() && !testing::Test::HasFailure();) {
    const int client = (entry++)->first;
    compare(client);
    if (model_.world.isOpen(client)) continue;
    wires_.erase(client);
    model_.world.clients.erase(client);
    hasEnded = true;
  }
  if (hasEnded && !model_.world.epoch.empty()) compareMetrics();
}

void ClientCheck::compare(int client) try {
  WireClient& wire = *wires_.at(client);
  model::Client& state = model_.world.clients.at(client);
  for (; !state.inbox.empty(); state.inbox.pop_front()) {
    const WireClient::Message got = wire.receive();
    ASSERT_EQ(got.closeCode, 0) << "client " << client << " lacks " << state.inbox.front();
    ASSERT_EQ(got.text, state.inbox.front()) << "client " << client;
  }
  if (state.closeCode != 0) {
    const WireClient::Message got = wire.receive();
    EXPECT_EQ(got.text, "") << "client " << client;
    EXPECT_EQ(got.closeCode, state.closeCode) << "client " << client;
    EXPECT_EQ(got.closeReason, state.closeReason) << "client " << client;
  } else {
    EXPECT_FALSE(wire.sync()) << "client " << client << " got " << wire.receive().text;
  }
} catch (const std::runtime_error& error) {
  ADD_FAILURE() << "client " << client << ": " << error.what();
}

std::string ClientCheck::findMetricsFault() {
  takeCalls();
  const std::string page = httpGet(rig_.port(), "/metrics");
  for (const auto& [name, value] : model_.metrics()) {
    const std::string line = fmt::format("\npocket_terminal_{} {}\n", name, value);
    if (page.find(line) == std::string::npos) {
      const size_t found = page.find("\npocket_terminal_" + name);
      return fmt::format("wanted {} but got {}", line, found == std::string::npos ? page : page.substr(found, 100));
    }
  }
  return {};
}

// After a failure they may differ for ever.
void ClientCheck::compareMetrics() {
  if (testing::Test::HasFailure()) return;
  std::string fault;
  holdsSoon([&] { return (fault = findMetricsFault()).empty(); });
  EXPECT_EQ(fault, "");
}

void ClientCheck::comparePages() {
  compareMetrics();
  takeCalls();
  terminal::BootTime oldest{};
  for (const Call& call : calls_) oldest = std::max(oldest, rig_.time().bootTime() - call.got.time);
  const bool isReady = model_.world.hasAgent && oldest <= std::chrono::seconds(10);
  for (const char* path : {"/health/ready", "/health"}) {
    EXPECT_THAT(httpGet(rig_.port(), path), testing::StartsWith(isReady ? "HTTP/1.1 200 " : "HTTP/1.1 503 ")) << path;
  }
  EXPECT_THAT(httpGet(rig_.port(), "/health/live"), testing::StartsWith("HTTP/1.1 200 "));
}

// Lines are written behind the answers that the first turn of the disk's thread waits for.
void ClientCheck::compareAudit() {
  rig_.settle();
  rig_.settle();
  EXPECT_THAT(linesOf(rig_.dataDir() / "audit.log"), testing::ContainerEq(model_.audit.lines()));
}

}  // namespace orvane::test
