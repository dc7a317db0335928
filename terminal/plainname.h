#pragma once

#include <string_view>

namespace orvane::terminal {

// What the name of a token and the key of a request are made of: 1 to 64 characters from A-Z a-z 0-9 . _ -
inline constexpr std::string_view kPlainNameRule = "1 to 64 characters from A-Z a-z 0-9 . _ -";

inline bool isPlainName(std::string_view text) {
  constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  return !text.empty() && text.size() <= 64 && text.find_first_not_of(kAllowed) == std::string_view::npos;
}

}  // namespace orvane::terminal
