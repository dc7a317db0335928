#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace orvane {

// A constant map, sorted by key at compile time. Iterates over pairs in the order of the keys.
template <typename Key, typename Value, size_t kSize>
class NameTable {
 public:
  using value_type = std::pair<Key, Value>;

  // Implicit, so that a table can be written as a list of rows.
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr NameTable(const value_type (&rows)[kSize]) {
    std::copy_n(rows, kSize, rows_.begin());
    std::sort(rows_.begin(), rows_.end(), [](const value_type& a, const value_type& b) { return a.first < b.first; });
  }

  // The row of `key`, or end().
  constexpr const value_type* find(const Key& key) const {
    const auto* row = std::lower_bound(begin(), end(), key,
                                       [](const value_type& candidate, const Key& k) { return candidate.first < k; });
    return row != end() && row->first == key ? row : end();
  }

  // The value of `key`, or `otherwise` if it has no row.
  constexpr Value valueOr(const Key& key, const Value& otherwise) const {
    const auto* row = find(key);
    return row == end() ? otherwise : row->second;
  }

  constexpr const value_type* begin() const { return rows_.data(); }
  constexpr const value_type* end() const { return rows_.data() + kSize; }
  constexpr size_t size() const { return kSize; }

 private:
  std::array<value_type, kSize> rows_{};
};

template <size_t kSize>
using NumbersByName = NameTable<std::string_view, int32_t, kSize>;
template <size_t kSize>
using NamesByNumber = NameTable<int32_t, std::string_view, kSize>;

}  // namespace orvane
