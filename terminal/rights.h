#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::terminal {

enum class Right : uint8_t { See = 1, Cancel = 2, Trade = 4 };

// What a token may do: any of see, cancel and trade; none implies another.
class Rights {
 public:
  Rights() = default;
  explicit Rights(int bits) : bits_(static_cast<uint8_t>(bits & kAll)) {}

  // Reads a list such as "see,cancel". Throws std::invalid_argument with a text that names the mistake.
  static Rights read(std::string_view list);
  static Rights all() { return Rights(kAll); }

  bool has(Right right) const { return (bits_ & static_cast<uint8_t>(right)) != 0; }
  bool empty() const { return bits_ == 0; }
  int bits() const { return bits_; }

  // In the order of Right.
  std::vector<std::string_view> names() const;

 private:
  static constexpr int kAll = 7;
  uint8_t bits_ = 0;
};

std::string_view rightName(Right right);

}  // namespace orvane::terminal
