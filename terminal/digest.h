#pragma once

#include <array>
#include <string_view>

namespace orvane::terminal {

using Digest = std::array<unsigned char, 32>;

// SHA-256. Throws std::runtime_error if OpenSSL does not offer it.
Digest sha256(std::string_view bytes);

}  // namespace orvane::terminal
