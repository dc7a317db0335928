#include "terminal/relay/subjects.h"

#include <chrono>
#include <random>
#include <vector>

#include <fmt/format.h>

namespace orvane::terminal::relay {
namespace {

constexpr size_t kMaxName = 32;

std::vector<std::string_view> split(std::string_view subject) {
  std::vector<std::string_view> tokens;
  for (size_t dot = 0; (dot = subject.find('.')) != std::string_view::npos; subject.remove_prefix(dot + 1)) {
    tokens.push_back(subject.substr(0, dot));
  }
  tokens.push_back(subject);
  return tokens;
}

std::optional<Party> party(std::string_view name, std::string_view epoch) {
  if (!isName(name) || !isName(epoch)) return std::nullopt;
  return Party{std::string(name), std::string(epoch)};
}

}  // namespace

bool isName(std::string_view text) {
  constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
  return !text.empty() && text.size() <= kMaxName && text.find_first_not_of(kAllowed) == std::string_view::npos;
}

std::string checkName(const std::string& name) {
  return isName(name) ? "" : fmt::format("{} is no name: {}", name, kNameRule);
}

Party startParty(std::string name, WallTime start) {
  std::random_device random;
  return {std::move(name), fmt::format("{:010x}{:08x}", std::chrono::system_clock::to_time_t(start), random())};
}

std::string presenceSubject(std::string_view terminal) { return fmt::format("pocket.here.{}", terminal); }

std::string upSubject(const Party& terminal, const Party& relay) {
  return fmt::format("pocket.up.{}.{}.{}.{}", terminal.name, terminal.epoch, relay.name, relay.epoch);
}

std::string downSubject(const Party& relay, const Party& terminal) {
  return fmt::format("pocket.down.{}.{}.{}.{}", relay.name, relay.epoch, terminal.name, terminal.epoch);
}

std::string allUpSubjects(const Party& terminal) {
  return fmt::format("pocket.up.{}.{}.*.*", terminal.name, terminal.epoch);
}

std::string allDownSubjects(const Party& relay) {
  return fmt::format("pocket.down.{}.{}.*.*", relay.name, relay.epoch);
}

std::optional<Party> senderOf(std::string_view subject) {
  const std::vector<std::string_view> tokens = split(subject);
  if (tokens[0] != "pocket") return std::nullopt;
  if (tokens.size() == 3 && tokens[1] == "here" && isName(tokens[2])) return Party{std::string(tokens[2]), {}};
  if (tokens.size() != 6 || (tokens[1] != "up" && tokens[1] != "down")) return std::nullopt;
  return party(tokens[4], tokens[5]);
}

}  // namespace orvane::terminal::relay
