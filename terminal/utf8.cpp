#include "terminal/utf8.h"

#include <boost/locale/utf.hpp>

namespace orvane::terminal {

char32_t nextCodePoint(std::string_view& text) {
  namespace utf = boost::locale::utf;
  const char* next = text.data();
  const utf::code_point value = utf::utf_traits<char>::decode(next, text.data() + text.size());
  const bool bad = value == utf::illegal || value == utf::incomplete;
  text.remove_prefix(bad ? 1 : static_cast<size_t>(next - text.data()));
  return bad ? kNoCharacter : value;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    if (nextCodePoint(text) == kNoCharacter) return false;
  }
  return true;
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
