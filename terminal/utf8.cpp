#include "terminal/utf8.h"

#include <boost/locale/utf.hpp>
#include <cstring>

namespace orvane::terminal {
namespace {

// A lower bound, in steps of eight, of the number of leading ASCII bytes.
size_t asciiPrefix(std::string_view text) {
  constexpr uint64_t kHighBits = 0x8080'8080'8080'8080;
  size_t length = 0;
  for (uint64_t block = 0; text.size() - length >= sizeof block; length += sizeof block) {
    std::memcpy(&block, text.data() + length, sizeof block);
    if ((block & kHighBits) != 0) break;
  }
  return length;
}

}  // namespace

char32_t nextCodePoint(std::string_view& text) {
  namespace utf = boost::locale::utf;
  const char* next = text.data();
  const utf::code_point value = utf::utf_traits<char>::decode(next, text.data() + text.size());
  const bool bad = value == utf::illegal || value == utf::incomplete;
  text.remove_prefix(bad ? 1 : static_cast<size_t>(next - text.data()));
  return bad ? kNoCharacter : value;
}

bool isUtf8(std::string_view text) {
  while (true) {
    text.remove_prefix(asciiPrefix(text));
    if (text.empty()) return true;
    if (nextCodePoint(text) == kNoCharacter) return false;
  }
}

std::string repairUtf8(std::string_view text) {
  std::string repaired;
  repaired.reserve(text.size());
  while (!text.empty()) {
    const std::string_view before = text;
    if (nextCodePoint(text) == kNoCharacter) {
      repaired += "\uFFFD";
    } else {
      repaired += before.substr(0, before.size() - text.size());
    }
  }
  return repaired;
}

}  // namespace orvane::terminal
