#include "tests/gateway/model/audit.h"

#include <ctime>

#include <fmt/format.h>

namespace orvane::test::model {
namespace {

constexpr int kMaxRefusals = 10;
constexpr size_t kMaxRefusedBody = 1024;

// Of the machine's time zone, with a colon in the offset.
std::string timeText(int64_t time) {
  const std::time_t seconds = time;
  char text[40];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S.000%z", std::localtime(&seconds));
  std::string withColon = text;
  return withColon.insert(withColon.size() - 2, ":");
}

std::string headText(int64_t time, const std::string& token, const std::string& address, const std::string& topic,
                     const std::string& body, const std::string& key) {
  return fmt::format(R"({{"time":"{}","token":{},"address":{},"topic":{},"body":{},"key":{})", timeText(time),
                     quoted(token), quoted(address), quoted(topic), orNull(body), key.empty() ? "null" : quoted(key));
}

std::string refusal(const std::string& message) {
  return fmt::format(R"(,"outcome":"refused","message":{},"data":null}})", quoted(message));
}

}  // namespace

std::string Audit::head(int client, const Request& request) const {
  const Client& self = world_.clients.at(client);
  return headText(world_.now, world_.tokens.at(self.token).name, self.address, request.topic, request.data,
                  request.key);
}

void Audit::answered(const std::string& head, const Reply& reply) {
  lines_.insert(fmt::format(R"({},"outcome":"answered","message":{},"data":{}}})", head, quoted(reply.message),
                            reply.text.empty() ? orNull(reply.data) : quoted(reply.text)));
}

void Audit::unknown(const std::string& head) {
  lines_.insert(head +
                R"(,"outcome":"unknown","message":"the terminal ended before the reply was known","data":null})");
}

void Audit::refused(int client, Request request, const std::string& fault) {
  if (++refusals_[world_.clients.at(client).token] > kMaxRefusals) return;
  if (request.data.size() > kMaxRefusedBody) request.data.clear();
  lines_.insert(head(client, request) + refusal(fault));
}

void Audit::endSecond(int64_t time) {
  for (const auto& [token, count] : refusals_) {
    if (count <= kMaxRefusals) continue;
    lines_.insert(
        headText(time, world_.tokens.at(token).name, "", "", "", "") +
        refusal(fmt::format("{} more requests of this token were refused within a second", count - kMaxRefusals)));
  }
  refusals_.clear();
}

}  // namespace orvane::test::model
