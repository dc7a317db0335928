#include "terminal/client/table.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "terminal/json.h"
#include "terminal/utf8.h"

namespace orvane::terminal {
namespace {

struct Cell {
  std::string text;
  bool rightAligned = false;
  size_t width = 0;
};
using Row = std::vector<Cell>;

constexpr std::string_view kGap = "  ";

struct Range {
  char32_t first;
  char32_t last;
};

template <size_t kCount>
bool isIn(const std::array<Range, kCount>& ranges, char32_t character) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [&](const Range& range) { return character >= range.first && character <= range.last; });
}

// The C0 and C1 control characters, the separators of lines and paragraphs, and the characters that change the writing
// direction.
constexpr std::array<Range, 6> kControls{
    {{0x00, 0x1F}, {0x7F, 0x9F}, {0x061C, 0x061C}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}}};

Cell makeCell(std::string_view text, bool rightAligned) {
  std::string escaped = escapeControls(text);
  const size_t width = displayWidth(escaped);
  return {std::move(escaped), rightAligned, width};
}

// Collects the members of one object, or of each object in an array, as rows of cells.
class RowReader : public JsonHandler<RowReader> {
 public:
  bool Null() { return scalar("null", false); }
  bool Bool(bool value) { return scalar(value ? "true" : "false", false); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool /*copy*/) { return scalar({text, length}, true); }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) { return scalar({text, length}, false); }

  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    if (depth() == cellDepth()) {
      name_ = inInner_ ? listName_ + '.' : "";
      name_.append(text, length);
    } else {
      separate();
      nested_.append(text, length).append(": ");
      atValue_ = true;
    }
    return true;
  }

  bool value(JsonKind kind) {
    if (depth() == 0) listDepth_ = kind == JsonKind::Array ? 1 : 0;
    if (depth() <= listDepth_) return startOuter(kind);
    if (kind == JsonKind::Object && !inInner_ && depth() == listDepth_ + 2 && closers_ == "]") return startInner();
    separate();
    nested_ += kind == JsonKind::Array ? '[' : '{';
    closers_ += kind == JsonKind::Array ? ']' : '}';
    atValue_ = true;
    return true;
  }

  bool end() {
    if (depth() <= listDepth_) return true;
    if (inInner_ && depth() < cellDepth()) {
      inInner_ = false;
      name_ = listName_;
      nested_ = std::move(listNested_);
      atValue_ = nested_ == "[";
      return true;
    }
    nested_ += closers_.back();
    closers_.pop_back();
    atValue_ = false;
    if (depth() == cellDepth()) endNested();
    return true;
  }

  // The names, then the rows, all of the same length.
  std::vector<Row> takeRows() {
    for (Row& row : rows_) row.resize(head_.size());
    rows_.insert(rows_.begin(), std::move(head_));
    return std::move(rows_);
  }

 private:
  // The depth of the members that are cells.
  int cellDepth() const { return listDepth_ + (inInner_ ? 3 : 1); }

  // The list may hold only objects.
  bool startOuter(JsonKind kind) {
    inners_ = 0;
    if (kind == JsonKind::Object) rows_.emplace_back();
    return kind == JsonKind::Object || (depth() == 0 && kind == JsonKind::Array);
  }

  // An object in a list that is itself a member becomes a line of its own, which repeats the cells before it.
  bool startInner() {
    if (inners_ == 0) outer_ = rows_.back();
    if (inners_++ > 0) rows_.push_back(outer_);
    listName_ = name_;
    listNested_ = std::exchange(nested_, {});
    inInner_ = true;
    return true;
  }

  bool scalar(std::string_view text, bool isNumber) {
    if (depth() <= listDepth_) return false;
    if (depth() == cellDepth()) {
      put(makeCell(text, isNumber));
    } else {
      separate();
      nested_ += text;
    }
    return true;
  }

  void separate() {
    if (!atValue_ && !nested_.empty()) nested_ += ", ";
    atValue_ = false;
  }

  void endNested() {
    const std::string text = std::exchange(nested_, {});
    if (inInner_ || inners_ == 0 || text != "[]") put(makeCell(text, false));
  }

  void put(Cell cell) {
    Cell name = makeCell(name_, cell.rightAligned);
    const auto found =
        std::find_if(head_.begin(), head_.end(), [&](const Cell& each) { return each.text == name.text; });
    const auto column = static_cast<size_t>(found - head_.begin());
    if (found == head_.end()) head_.push_back(std::move(name));
    Row& row = rows_.back();
    if (row.size() <= column) row.resize(column + 1);
    row[column] = std::move(cell);
  }

  int listDepth_ = 0;  // 1 in a list, 0 for a single object
  std::string name_;
  Row head_;
  std::vector<Row> rows_;
  std::string nested_;   // the nested value so far; empty outside of one
  std::string closers_;  // the brackets still to close
  bool atValue_ = false;
  bool inInner_ = false;
  int inners_ = 0;
  Row outer_;
  std::string listName_;
  std::string listNested_;
};

std::vector<size_t> columnWidths(const std::vector<Row>& rows) {
  std::vector<size_t> widths(rows.front().size());
  for (const Row& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].width);
  }
  return widths;
}

size_t tableWidth(const std::vector<Row>& rows) {
  size_t width = 0;
  for (const size_t column : columnWidths(rows)) width += column + kGap.size();
  return width;
}

std::string layOut(const std::vector<Row>& rows) {
  const std::vector<size_t> widths = columnWidths(rows);
  std::string text;
  for (const Row& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) {
      const std::string padding(widths[i] - row[i].width, ' ');
      if (i > 0) text += kGap;
      text += row[i].rightAligned ? padding + row[i].text : row[i].text + padding;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

// The names and the rows from `first` to `last`, each as a column.
std::vector<Row> turn(const std::vector<Row>& rows, size_t first, size_t last) {
  std::vector<Row> turned(rows.front().size());
  for (size_t i = 0; i < turned.size(); ++i) {
    turned[i].push_back({rows.front()[i].text, false, rows.front()[i].width});
    for (size_t row = first; row < last; ++row) turned[i].push_back(rows[row][i]);
  }
  return turned;
}

std::string layOutTurned(const std::vector<Row>& rows, size_t screenWidth) {
  std::string text;
  for (size_t first = 1, last = 1; first < rows.size(); first = last) {
    for (last = first + 1; last < rows.size() && tableWidth(turn(rows, first, last + 1)) <= screenWidth;) ++last;
    if (first > 1) text += '\n';
    text += layOut(turn(rows, first, last));
  }
  return text;
}

// The wide and full-width characters of Unicode's East Asian Width, as whole blocks.
constexpr std::array<Range, 13> kWide{{{0x1100, 0x115F},
                                       {0x2E80, 0x303E},
                                       {0x3041, 0x4DBF},
                                       {0x4E00, 0xA4CF},
                                       {0xA960, 0xA97F},
                                       {0xAC00, 0xD7A3},
                                       {0xF900, 0xFAFF},
                                       {0xFE30, 0xFE6F},
                                       {0xFF00, 0xFF60},
                                       {0xFFE0, 0xFFE6},
                                       {0x1F300, 0x1F64F},
                                       {0x1F900, 0x1F9FF},
                                       {0x20000, 0x3FFFD}}};

}  // namespace

std::string escapeControls(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  while (!text.empty()) {
    const std::string_view before = text;
    const char32_t character = nextCodePoint(text);
    if (character == kNoCharacter) {
      escaped += fmt::format("\\x{:02X}", static_cast<unsigned char>(before.front()));
    } else if (isIn(kControls, character)) {
      escaped += fmt::format("\\u{:04X}", static_cast<uint32_t>(character));
    } else {
      escaped += before.substr(0, before.size() - text.size());
    }
  }
  return escaped;
}

size_t displayWidth(std::string_view text) {
  size_t width = 0;
  while (!text.empty()) width += isIn(kWide, nextCodePoint(text)) ? 2U : 1U;
  return width;
}

std::string writeTable(std::string_view json, size_t screenWidth) {
  RowReader reader;
  rapidjson::MemoryStream stream(json.data(), json.size());
  if (!readJson(stream, reader).ok) return escapeControls(json) + '\n';
  const std::vector<Row> rows = reader.takeRows();
  if (rows.size() == 1) return "(nothing)\n";
  const bool fits = screenWidth == 0 || tableWidth(rows) <= screenWidth;
  return fits ? layOut(rows) : layOutTurned(rows, screenWidth);
}

}  // namespace orvane::terminal
