#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "terminal/client/table.h"

namespace orvane::test {
namespace {

TEST(Table, LaysOutWhatCame) {
  struct Row {
    std::string json;
    size_t screenWidth;
    std::string table;
  };
  const std::string list =
      R"([{"name":"螺纹钢","last":3325.0,"ok":true},{"name":"T2703","last":-7,"ok":null,"more":"é"}])";
  const std::vector<Row> rows{
      {list, 0,
       "name      last  ok    more\n"
       "螺纹钢  3325.0  true\n"
       "T2703       -7  null  é\n"},
      {list, 24,
       "name  螺纹钢  T2703\n"
       "last  3325.0     -7\n"
       "ok    true    null\n"
       "more          é\n"},
      {list, 10,
       "name  螺纹钢\n"
       "last  3325.0\n"
       "ok    true\n"
       "more\n"
       "\n"
       "name  T2703\n"
       "last     -7\n"
       "ok    null\n"
       "more  é\n"},
      {R"([{"a":[1,"x",[]],"b":{"c":[{"d":1},{"e":"y"}]}}])", 0,
       "a           b\n"
       "[1, x, []]  {c: [{d: 1}, {e: y}]}\n"},
      {R"([{"i":1,"r":[{"h":5,"m":[7]},{"h":6}]},{"i":2,"r":[]}])", 0,
       "i  r.h  r.m  r\n"
       "1    5  [7]\n"
       "1    6\n"
       "2            []\n"},
      {R"({"name":"x\u001b[2J","n":1})", 0, "name        n\nx\\u001B[2J  1\n"},
      {R"([{"\u202ea\n":"\u0085"},{"\u202ea\n":["\u2066x\u200f","\u061c"]}])", 0,
       "\\u202Ea\\u000A\n"
       "\\u0085\n"
       "[\\u2066x\\u200F, \\u061C]\n"},
      {"plain\x7F\u202Etext\x9B", 0, "plain\\u007F\\u202Etext\\x9B\n"},
      {"[]", 80, "(nothing)\n"},
      {"[1,2]", 80, "[1,2]\n"},
      {"null", 80, "null\n"},
      {"plain text", 80, "plain text\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.json);
    EXPECT_EQ(terminal::writeTable(row.json, row.screenWidth), row.table);
  }
}

TEST(Table, MeasuresAsTheScreenDoes) {
  EXPECT_EQ(terminal::displayWidth("ab"), 2U);
  EXPECT_EQ(terminal::displayWidth("中文，é"), 7U);
  EXPECT_EQ(terminal::displayWidth("𠮷\xFF"), 3U);
}

}  // namespace
}  // namespace orvane::test
