#include "host/common.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/chrono.h>
#include <iconv.h>

namespace orvane {
namespace {

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

// Converts in one direction. Each byte that cannot be converted becomes `substitute`.
class Converter {
 public:
  Converter(const char* to, const char* from, std::string_view substitute)
      : handle_(iconv_open(to, from)), substitute_(substitute) {
    // iconv reports failure as a pointer of value -1.
    if (reinterpret_cast<intptr_t>(handle_) == -1) {
      throw std::runtime_error("iconv has no GB18030: install the C library's gconv modules");
    }
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // Appends the converted text to `result`.
  void convert(std::string_view text, std::string& result) {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    char* from = const_cast<char*>(text.data());  // iconv only reads it
    size_t left = text.size();
    while (left > 0) {
      std::array<char, 512> piece;
      char* to = piece.data();
      size_t room = piece.size();
      const size_t code = iconv(handle_, &from, &left, &to, &room);
      result.append(piece.data(), piece.size() - room);
      if (code != static_cast<size_t>(-1) || errno == E2BIG) continue;
      result += substitute_;
      ++from;
      --left;
    }
  }

 private:
  iconv_t handle_;
  std::string_view substitute_;
};

constexpr std::string_view kNoCharacter = "\xEF\xBF\xBD";

// The UTF-8 form of the two-byte GBK characters, because one iconv call per short text is slow. Anything else
// (unassigned pairs, four-byte characters, invalid bytes) goes through iconv.
class GbkTable {
 public:
  GbkTable() {
    Converter converter("UTF-8", "GB18030", kNoCharacter);
    std::string utf8;
    for (size_t pair = 0; pair < entries_.size(); ++pair) {
      const std::array<char, 2> gbk{static_cast<char>(0x80 | pair >> 8), static_cast<char>(pair & 0xFF)};
      utf8.clear();
      converter.convert({gbk.data(), gbk.size()}, utf8);
      if (utf8.size() >= 2 && utf8.size() <= 3 && !utf8.starts_with(kNoCharacter) && gbk[1] != '\0') {
        utf8.copy(entries_[pair].utf8, utf8.size());
        entries_[pair].size = static_cast<char>(utf8.size());
      }
    }
  }

  // Converts `text` up to the first character that is not in the table. `out` must have room for 1.5 times the size of
  // `text` plus three bytes. Returns the first unread character and the end of the output.
  std::pair<const char*, char*> convert(std::string_view text, char* out) const {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
      if (isAscii(*at)) {
        *out++ = *at++;
        continue;
      }
      const int pair = end - at < 2 ? 0 : (at[0] & 0x7F) << 8 | (at[1] & 0xFF);
      const Entry& entry = entries_[static_cast<size_t>(pair)];
      if (entry.size == 0) break;
      std::memcpy(out, &entry, sizeof(entry));
      out += entry.size;
      at += 2;
    }
    return {at, out};
  }

 private:
  struct Entry {
    char utf8[3]{};
    char size = 0;
  };

  std::array<Entry, size_t{0x80} << 8> entries_;  // by both bytes without the top bit, which is always set
};

}  // namespace

std::string CodeConvert::gbk_to_utf8(const std::string& text) {
  static const GbkTable table;
  std::string result(text.size() + text.size() / 2 + 3, '\0');
  const auto [from, to] = table.convert(text, result.data());
  result.resize(static_cast<size_t>(to - result.data()));
  if (const std::string_view rest(from, text.data() + text.size()); !rest.empty()) {
    thread_local Converter converter("UTF-8", "GB18030", kNoCharacter);
    converter.convert(rest, result);
  }
  return result;
}

std::string CodeConvert::utf8_to_gbk(const std::string& text) {
  if (std::all_of(text.begin(), text.end(), isAscii)) return text;
  thread_local Converter converter("GB18030", "UTF-8", "?");
  std::string result;
  result.reserve(text.size());
  converter.convert(text, result);
  return result;
}

Timestamp Timestamp::now(OrvTimeZone zone) {
  const auto since = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration_cast<std::chrono::microseconds>(since).count(), zone};
}

std::string Timestamp::toISO8601String() const {
  const auto seconds = static_cast<std::time_t>(microseconds / 1'000'000);
  std::tm local{};
  localtime_r(&seconds, &local);
  return fmt::format("{:%FT%T}.{:06}{:%z}", local, microseconds % 1'000'000, local);
}

bool isTimeEnabled() { return true; }

}  // namespace orvane
