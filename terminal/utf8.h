#pragma once

#include <string>
#include <string_view>

namespace orvane::terminal {

// What nextCodePoint returns for a byte that does not start a whole UTF-8 character.
inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

// Takes the first character off `text`, which must not be empty. Where the bytes are no UTF-8 it takes one byte and
// returns kNoCharacter.
char32_t nextCodePoint(std::string_view& text);

bool isUtf8(std::string_view text);

// `text` with U+FFFD for each byte that is no part of a UTF-8 character.
std::string repairUtf8(std::string_view text);

}  // namespace orvane::terminal
