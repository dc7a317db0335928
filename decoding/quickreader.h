#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "pocketagent/json.h"

namespace orvane {

// Reads bodies as phones write them, at a fraction of the stock reader's cost, and gives up on all else: faults,
// escapes, exponents, numbers of more than 15 digits, deep nesting. What it does read it tells `Handler` as the stock
// reader would; what it gives up on, the stock reader has to read from the start. Strings are told by their place in
// the text.
template <typename Handler>
class QuickReader {
 public:
  // `text` ends in a NUL.
  QuickReader(const char* text, Handler& handler) : at_(text), handler_(handler) {}

  // The first value of the text, what stands behind it is not looked at. False where it gives up.
  bool read() { return value(0); }

 private:
  static constexpr int kMaxDepth = 8;
  static constexpr int kMaxDigits = 15;  // so many fit a double, and a division by a power of ten rounds them right

  bool value(int depth) {
    skipSpace();
    switch (*at_) {
      case '{':
        return depth < kMaxDepth && object(depth + 1);
      case '[':
        return depth < kMaxDepth && array(depth + 1);
      case '"':
        return string([this](std::string_view text) { return handler_.String(text.data(), size(text), false); });
      case 't':
        return literal("true") && handler_.Bool(true);
      case 'f':
        return literal("false") && handler_.Bool(false);
      case 'n':
        return literal("null") && handler_.Null();
      default:
        return number();
    }
  }

  bool object(int depth) {
    ++at_;
    rapidjson::SizeType count = 0;
    handler_.StartObject();
    if (!next('}')) {
      do {
        skipSpace();
        if (*at_ != '"' ||
            !string([this](std::string_view text) { return handler_.Key(text.data(), size(text), false); }) ||
            !next(':') || !value(depth)) {
          return false;
        }
        ++count;
      } while (next(','));
      if (!next('}')) {
        return false;
      }
    }
    return handler_.EndObject(count);
  }

  bool array(int depth) {
    ++at_;
    rapidjson::SizeType count = 0;
    handler_.StartArray();
    if (!next(']')) {
      do {
        if (!value(depth)) {
          return false;
        }
        ++count;
      } while (next(','));
      if (!next(']')) {
        return false;
      }
    }
    return handler_.EndArray(count);
  }

  template <typename Tell>
  bool string(Tell tell) {
    const char* const begin = ++at_;
    while (*at_ != '"') {
      if (*at_ == '\\' || static_cast<unsigned char>(*at_) < 0x20) {
        return false;
      }
      ++at_;
    }
    return tell(std::string_view(begin, static_cast<size_t>(at_++ - begin)));
  }

  bool number() {
    const bool negative = *at_ == '-';
    at_ += negative ? 1 : 0;
    const char* const begin = at_;
    int64_t whole = 0;
    digits(whole);
    const auto count = at_ - begin;
    if (count == 0 || count > kMaxDigits || (count > 1 && *begin == '0') || *at_ == 'e' || *at_ == 'E') {
      return false;
    }
    if (*at_ == '.') {
      return fraction(negative, whole, static_cast<int>(count));
    }
    return negative ? handler_.Int64(-whole) : handler_.Uint64(static_cast<uint64_t>(whole));
  }

  bool fraction(bool negative, int64_t significand, int wholeDigits) {
    static constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                         1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
    const char* const begin = ++at_;
    digits(significand);
    const auto count = at_ - begin;
    if (count == 0 || count > kMaxDigits - wholeDigits || *at_ == 'e' || *at_ == 'E') {
      return false;
    }
    const double size = static_cast<double>(significand) / kPowers[count];
    return handler_.Double(negative ? -size : size);
  }

  // Appends the digits that stand here, as far as they fit.
  void digits(int64_t& number) {
    constexpr int64_t kNoMore = INT64_MAX / 10 - 1;
    for (; *at_ >= '0' && *at_ <= '9'; ++at_) {
      number = number < kNoMore ? number * 10 + (*at_ - '0') : number;
    }
  }

  bool literal(std::string_view text) {
    const bool found = std::strncmp(at_, text.data(), text.size()) == 0;
    at_ += found ? text.size() : 0;
    return found;
  }

  // Takes this character where it comes next.
  bool next(char wanted) {
    skipSpace();
    const bool found = *at_ == wanted;
    at_ += found ? 1 : 0;
    return found;
  }

  void skipSpace() {
    while (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t') {
      ++at_;
    }
  }

  static rapidjson::SizeType size(std::string_view text) { return static_cast<rapidjson::SizeType>(text.size()); }

  const char* at_;
  Handler& handler_;
};

}  // namespace orvane
