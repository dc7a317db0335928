#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvane::terminal {

// The secret that lets a phone in: 32 random bytes in base64url, 43 characters, in the file `token` of the data folder,
// which its owner alone can read.

// Reads the token, or makes it when there is none. Throws std::runtime_error when the file can neither be read nor
// made, holds no token, or can be read by others.
std::string loadOrMakeToken(const std::filesystem::path& dataDir);

// Reads the token. Throws std::runtime_error where there is none.
std::string loadToken(const std::filesystem::path& dataDir);

// Takes as long for a nearly right guess as for any other.
bool sameToken(std::string_view token, std::string_view guess);

}  // namespace orvane::terminal
