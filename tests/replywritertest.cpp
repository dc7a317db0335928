#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "pocketagent/requesttask.h"
#include "serialise/ordersource.h"
#include "serialise/replywriter.h"
#include "tests/support/phone.h"
#include "vocabulary/gbk.h"

namespace orvane::test {
namespace {

template <typename Value>
std::string written(const Value& value) {
  const std::string row =
      writeRows(std::vector<Value>{value}, [](ReplyWriter& w, const Value& v) { w.member("k", v); });
  return row.substr(6, row.size() - 8);  // between [{"k": and }]
}

TEST(ReplyWriter, ValuesHaveTheirExactText) {
  EXPECT_EQ(writeRows(std::vector<int32_t>{}, [](ReplyWriter&, int32_t) {}), "[]");
  EXPECT_EQ(written(100.0), "100.0");
  EXPECT_EQ(written(0.0), "0.0");
  EXPECT_EQ(written(-0.0), "-0.0");
  EXPECT_EQ(written(1e21), "1e21");
  EXPECT_EQ(written(0.1), "0.1");
  EXPECT_EQ(written(1234567890.123456), "1234567890.123456");
  EXPECT_EQ(written(5e-324), "5e-324");
  EXPECT_EQ(written(std::numeric_limits<int32_t>::min()), "-2147483648");
  EXPECT_EQ(written(std::numeric_limits<int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(written(std::string("a\"b\\c/\n\x01\x1f\x7f")), "\"a\\\"b\\\\c/\\n\\u0001\\u001F\x7f\"");
  EXPECT_EQ(written(std::string("cut\0here", 8)), "\"cut\"");
  EXPECT_EQ(written(gbk("螺纹")), "\"" + gbk("螺纹") + "\"");
  EXPECT_EQ(writeRows(std::vector{1}, [](ReplyWriter& w, int) { w.member("a", true), w.member("b", false); }),
            R"([{"a":true,"b":false}])");
}

// Short decimals take a shorter path.
TEST(ReplyWriter, DoublesAreTheStockWritersText) {
  std::mt19937_64 random(1);
  const auto stock = [](double value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer>(buffer).Double(value);
    return std::string(buffer.GetString());
  };
  for (int round = 0; round < 20'000; ++round) {
    const auto whole = static_cast<double>(static_cast<int64_t>(random()) >> (random() % 64));
    for (const double value : {whole, whole / 10, whole / 100, whole / 1000, whole / 10'000, whole * 0.001, whole / 3,
                               std::nextafter(whole / 100, 0), 1 / whole, -whole / 1000}) {
      if (std::isfinite(value)) {
        ASSERT_EQ(written(value), stock(value));
      }
    }
  }
}

TEST(ReplyWriter, NaNAndInfinityLeaveTheirKeyWithoutAValue) {
  for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    EXPECT_EQ(writeRows(std::vector{value}, [](ReplyWriter& w, double v) { w.member("a", v), w.member("b", 1); }),
              R"([{"a":,"b":1}])");
  }
}

TEST(OrderSource, ShowsTheTextAndTwoFlags) {
  // clang-format off
  const std::vector<std::pair<int64_t, std::string>> rows = {
      {0x8400000, "x|算法下单|交易助手"}, {-1, "x|算法下单|交易助手"}, {0x8000000, "x|算法下单"},
      {0x400000, "x|交易助手"}, {0x100000, "x"}, {0, "x"}};
  // clang-format on
  for (const auto& [flags, text] : rows) EXPECT_EQ(formatOrderSource({flags, "x", ""}), gbk(text)) << flags;
}

TEST(Lookups, LeaveTheRecordUnchangedIfTheHostHasNone) {
  ScriptedHost host;
  TradingAccountID found = accountId(3, "mine");
  EXPECT_THAT(IRequestTask::findAccount(3, found), FieldsAre(41, "get capital fail,orvquant inner error"));
  std::string type = "type";
  std::string name = "name";
  EXPECT_THAT(IRequestTask::findCodeType(-5, type, name), FieldsAre(-1, "can not find code type by hashcode:-5"));
  EXPECT_EQ(found.userCode + type + name, "minetypename");
  host.accounts = {account(3, "first"), account(3, "second")};
  EXPECT_THAT(IRequestTask::findAccount(3, found), FieldsAre(0, ""));
  EXPECT_EQ(found.userCode, "first");
}

TEST(Gbk, TableIsSortedAndAgreesWithIconv) {
  char32_t last = 0;
  for (const gbk::Character& character : gbk::kCharacters) {
    EXPECT_LT(last, character.unicode);
    last = character.unicode;
    const std::string bytes = {static_cast<char>(character.bytes >> 8), static_cast<char>(character.bytes & 0xFF)};
    const std::string utf8 = CodeConvert::gbk_to_utf8(bytes);
    ASSERT_EQ(utf8.size(), 3U);
    const auto bits = [&](size_t at, unsigned mask) { return static_cast<unsigned char>(utf8[at]) & mask; };
    EXPECT_EQ(character.unicode, bits(0, 0x0F) << 12 | bits(1, 0x3F) << 6 | bits(2, 0x3F));
  }
}

}  // namespace
}  // namespace orvane::test
