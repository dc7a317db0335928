#pragma once

#include <string_view>

namespace orvane::terminal {

// The form of a token's name and of a request's key.
inline constexpr std::string_view kPlainNameRule = "1 to 64 characters from A-Z a-z 0-9 . _ -";

inline bool isPlainName(std::string_view text) {
  constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  return !text.empty() && text.size() <= 64 && text.find_first_not_of(kAllowed) == std::string_view::npos;
}

}  // namespace orvane::terminal
