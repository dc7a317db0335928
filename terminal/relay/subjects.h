#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "terminal/clocks.h"

namespace orvane::terminal::relay {

// The name of a terminal or a relay: one token of a subject.
inline constexpr std::string_view kNameRule = "1 to 32 characters from A-Z a-z 0-9 _ -";
bool isName(std::string_view text);

// For CLI::Validator: what is wrong with a name.
std::string checkName(const std::string& name);

// One run of a terminal or a relay: its name, and a text that differs in each run and sorts by the time of its start.
struct Party {
  std::string name;
  std::string epoch;
  bool operator==(const Party&) const = default;
  bool operator<(const Party& other) const { return std::tie(name, epoch) < std::tie(other.name, other.epoch); }
};

// REQUIRES: a name.
Party startParty(std::string name, WallTime start);

// The subjects. Each contains the sender's name where the server's permissions can bind it to the sender's credentials.
std::string presenceSubject(std::string_view terminal);
std::string upSubject(const Party& terminal, const Party& relay);    // published by the relay
std::string downSubject(const Party& relay, const Party& terminal);  // published by the terminal

// Subscriptions.
inline constexpr std::string_view kAllPresences = "pocket.here.*";
std::string allUpSubjects(const Party& terminal);
std::string allDownSubjects(const Party& relay);

// The sender of a message: of presence the name alone. Empty for a subject of another form.
std::optional<Party> senderOf(std::string_view subject);

}  // namespace orvane::terminal::relay
