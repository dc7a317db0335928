#include "host/common.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <stdexcept>
#include <string_view>

#include <fmt/chrono.h>
#include <iconv.h>

namespace orvane {
namespace {

// One direction of conversion. What cannot be converted becomes `substitute`, byte for byte.
class Converter {
 public:
  Converter(const char* to, const char* from, std::string_view substitute)
      : handle_(iconv_open(to, from)), substitute_(substitute) {
    // iconv reports failure as a pointer of value -1.
    if (reinterpret_cast<intptr_t>(handle_) == -1) throw std::runtime_error("iconv knows no GB18030");
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  std::string convert(const std::string& text) {
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string result;
    result.reserve(text.size() + text.size() / 2);
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
    return result;
  }

 private:
  iconv_t handle_;
  std::string_view substitute_;
};

}  // namespace

std::string CodeConvert::gbk_to_utf8(const std::string& text) {
  thread_local Converter converter("UTF-8", "GB18030", "\xEF\xBF\xBD");
  return converter.convert(text);
}

std::string CodeConvert::utf8_to_gbk(const std::string& text) {
  thread_local Converter converter("GB18030", "UTF-8", "?");
  return converter.convert(text);
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
