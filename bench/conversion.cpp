#include <memory>
#include <random>
#include <stdexcept>

#include <iconv.h>

#include "bench/figure.h"
#include "bench/timing.h"
#include "host/common.h"

namespace orvane::bench {
namespace {

std::string convertNaively(const std::string& text) {
  thread_local iconv_t handle = iconv_open("UTF-8", "GB18030");
  std::string result(text.size() * 2, '\0');
  char* from = const_cast<char*>(text.data());  // iconv only reads it
  char* to = result.data();
  size_t left = text.size();
  size_t room = result.size();
  if (iconv(handle, &from, &left, &to, &room) == static_cast<size_t>(-1)) {
    throw std::runtime_error("iconv rejects the text");
  }
  result.resize(result.size() - room);
  return result;
}

// Names of instruments, 4 to 40 bytes: Chinese characters, every other one followed by a month.
std::vector<std::string> makeNames() {
  std::mt19937 random(3);
  std::vector<std::string> names(256);
  for (std::string& name : names) {
    const bool dated = random() % 2 == 0;
    for (size_t left = dated ? 1 + random() % 18 : 2 + random() % 19; left > 0; --left) {
      name += static_cast<char>(0xB0 + random() % 0x27);
      name += static_cast<char>(0xA1 + random() % 0x5E);
    }
    name += dated ? "2705" : "";
  }
  return names;
}

template <typename Convert>
auto converted(const std::vector<std::string>& names, Convert convert) {
  return [names, convert] {
    for (const std::string& name : names) keep(convert(name));
  };
}

Sides sides() {
  const std::vector<std::string> names = makeNames();
  for (const std::string& name : names) requireEqual(CodeConvert::gbk_to_utf8(name), convertNaively(name));
  return {timed(converted(names, CodeConvert::gbk_to_utf8)), timed(converted(names, convertNaively))};
}

}  // namespace

std::vector<Figure> conversionFigures() {
  return {{"GBK to UTF-8, 256 names", "iconv, a handle for each thread", "ns", Bound::AtMost, 1.10, 0.45, 101, sides}};
}

}  // namespace orvane::bench
