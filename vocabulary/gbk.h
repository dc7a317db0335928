#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orvane {

namespace gbk {

struct Character {
  char32_t unicode;
  uint16_t bytes;  // lead byte first
};

// Every character of the library's own GBK texts, in ascending order. A text with another character does not compile:
// add it here. The tests compare the table with iconv.
inline constexpr std::array kCharacters = std::to_array<Character>({
    {U'一', 0xD2BB}, {U'下', 0xCFC2}, {U'不', 0xB2BB}, {U'中', 0xD6D0}, {U'互', 0xBBA5}, {U'交', 0xBDBB},
    {U'仓', 0xB2D6}, {U'件', 0xBCFE}, {U'价', 0xBCDB}, {U'保', 0xB1A3}, {U'全', 0xC8AB}, {U'净', 0xBEBB},
    {U'利', 0xC0FB}, {U'券', 0xC8AF}, {U'动', 0xB6AF}, {U'助', 0xD6FA}, {U'化', 0xBBAF}, {U'单', 0xB5A5},
    {U'发', 0xB7A2}, {U'口', 0xBFDA}, {U'号', 0xBAC5}, {U'合', 0xBACF}, {U'同', 0xCDAC}, {U'启', 0xC6F4},
    {U'商', 0xC9CC}, {U'器', 0xC6F7}, {U'图', 0xCDBC}, {U'埋', 0xC2F1}, {U'多', 0xB6E0}, {U'头', 0xCDB7},
    {U'套', 0xCCD7}, {U'宝', 0xB1A6}, {U'寸', 0xB4E7}, {U'工', 0xB9A4}, {U'差', 0xB2EE}, {U'市', 0xCAD0},
    {U'平', 0xC6BD}, {U'序', 0xD0F2}, {U'开', 0xBFAA}, {U'式', 0xCABD}, {U'快', 0xBFEC}, {U'户', 0xBBA7},
    {U'手', 0xCAD6}, {U'批', 0xC5FA}, {U'投', 0xCDB6}, {U'持', 0xB3D6}, {U'指', 0xD6B8}, {U'损', 0xCBF0},
    {U'据', 0xBEDD}, {U'控', 0xBFD8}, {U'撤', 0xB3B7}, {U'支', 0xD6A7}, {U'易', 0xD2D7}, {U'普', 0xC6D5},
    {U'暂', 0xD4DD}, {U'有', 0xD3D0}, {U'未', 0xCEB4}, {U'本', 0xB1BE}, {U'机', 0xBBFA}, {U'条', 0xCCF5},
    {U'根', 0xB8F9}, {U'模', 0xC4A3}, {U'止', 0xD6B9}, {U'步', 0xB2BD}, {U'法', 0xB7A8}, {U'独', 0xB6C0},
    {U'画', 0xBBAD}, {U'监', 0xBCE0}, {U'盘', 0xC5CC}, {U'知', 0xD6AA}, {U'程', 0xB3CC}, {U'空', 0xBFD5},
    {U'算', 0xCBE3}, {U'约', 0xD4BC}, {U'线', 0xCFDF}, {U'自', 0xD7D4}, {U'获', 0xBBF1}, {U'融', 0xC8DA},
    {U'触', 0xB4A5}, {U'调', 0xB5F7}, {U'账', 0xD5CB}, {U'资', 0xD7CA}, {U'转', 0xD7AA}, {U'通', 0xCDA8},
    {U'速', 0xCBD9}, {U'部', 0xB2BF}, {U'量', 0xC1BF}, {U'针', 0xD5EB}, {U'键', 0xBCFC}, {U'非', 0xB7C7},
    {U'预', 0xD4A4},
});

// Not constexpr and never defined: a call during constant evaluation is a compile error that names the reason.
uint16_t characterIsMissingFromTheTable();

constexpr uint16_t encode(char32_t unicode) {
  const auto* found = std::lower_bound(kCharacters.begin(), kCharacters.end(), unicode,
                                       [](const Character& c, char32_t value) { return c.unicode < value; });
  return found != kCharacters.end() && found->unicode == unicode ? found->bytes : characterIsMissingFromTheTable();
}

// A UTF-8 literal as a template argument.
template <size_t kSize>
struct Literal {
  // Implicit, because a literal operator template requires it.
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr Literal(const char (&text)[kSize]) { std::copy_n(text, kSize, utf8); }
  char utf8[kSize]{};
};

// Chinese characters have three bytes in UTF-8 and two in GBK. ASCII is the same in both.
template <size_t kSize>
constexpr std::array<char, kSize> fromUtf8(const char (&utf8)[kSize]) {
  const auto bits = [&utf8](size_t at, unsigned mask) { return static_cast<char32_t>(utf8[at]) & mask; };
  std::array<char, kSize> text{};
  size_t out = 0;
  for (size_t in = 0; in + 1 < kSize;) {
    if (bits(in, 0x80) == 0) {
      text[out++] = utf8[in++];
      continue;
    }
    const bool threeBytes = bits(in, 0xF0) == 0xE0;
    const uint16_t bytes = threeBytes ? encode(bits(in, 0x0F) << 12 | bits(in + 1, 0x3F) << 6 | bits(in + 2, 0x3F))
                                      : characterIsMissingFromTheTable();
    text[out++] = static_cast<char>(bytes >> 8);
    text[out++] = static_cast<char>(bytes & 0xFF);
    in += 3;
  }
  return text;
}

template <Literal kText>
inline constexpr auto kBytes = fromUtf8(kText.utf8);

}  // namespace gbk

// A GBK text, written in the sources as UTF-8: "空指针"_gbk. Converted by the compiler; the bytes end in a NUL and have
// static lifetime.
template <gbk::Literal kText>
constexpr std::string_view operator""_gbk() {
  return gbk::kBytes<kText>.data();
}

}  // namespace orvane
