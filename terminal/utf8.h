#pragma once

#include <string>
#include <string_view>

namespace orvane::terminal {

// What nextCodePoint returns for a byte that does not start a whole UTF-8 character.
inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

// Removes the first character from `text` and returns it. If the bytes are not UTF-8, removes one byte and returns
// kNoCharacter. REQUIRES: `text` is not empty.
char32_t nextCodePoint(std::string_view& text);

bool isUtf8(std::string_view text);

// `text` with U+FFFD for each byte that is not part of a UTF-8 character.
std::string repairUtf8(std::string_view text);

}  // namespace orvane::terminal
