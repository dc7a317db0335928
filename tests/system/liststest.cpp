#include <gmock/gmock.h>

#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Reply;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Lists, AreAnsweredFromTheSampleData) {
  struct Row {
    std::string topic;
    std::string data;
    std::string replyTopic;
    std::string start;
    std::string part;
  };
  const std::string futures = R"([{"userCode":"80010001","index":1,)";
  const std::vector<Row> rows{
      {"position.list", "[1]", "position.list", futures + R"("accountType":0,"codeExch":"T2703.CFFEX",)",
       R"("aimType":"投机","codeType":"黑色系","codeName":"螺纹钢2701","code":"rb2701","exchangeName":"上海期货交易所",)"},
      {"order.list", "[1]", "order.list", futures + R"("accountType":0,"codeExch":"rb2701.SHFE",)",
       R"("localOrderId":"1005","status":4,"note":"委托价格 111 超出涨跌停范围 106.065 至 110.395",)"},
      {"trader.list", "[1]", "trader.list", futures,
       R"("localOrderId":"1003","source":"趋势|算法下单","accountStatus":1})"},
      {"monitor.list", "[1]", "monitor.list", futures,
       R"("syncRule":0,"syncRuleDetail":"多空单独","accountStatus":1})"},
      {"position.codetype.list", "[]", "position.codetype.list", R"([{"codeType":")", R"("codeType":"贵金属",)"},
      {"marginrate.list", R"([{"index":1,"hashCodes":[1000001,2000001]}])", "marginrate.list",
       R"([{"index":1,"accountStatus":1,"rate":[{"hashCode":1000001,"marginRate":0.13},)",
       R"({"hashCode":2000001,"marginRate":0.09}]}])"},
      {"creditinfo.list", "[4]", "creditinfo.list", R"([{"index":4,"accountStatus":1,"creditInfo":[{"totalAssets":)",
       R"("keepMarginRatio":1.3,)"},
      {"monitor.manual.list", R"([{"index":1,"hashCode":-4000002}])", "monitor.list", futures, R"("shortPos":2)"},
      {"monitor.sync.order.list", R"([{"index":1,"hashCode":1000002}])", "monitor.sync.order.list", futures,
       R"("codeExch":"au2702.SHFE","hashCode":1000002,"volume":1,)"},
      {"quote.list", "", "quote.list", R"([{"hashCode":)",
       R"("codeName":"螺纹钢2701","codeClass":1,"lastPrice":3325.0,)"},
  };
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  const auto phone = terminal.login();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.topic);
    const Reply reply = phone->request(row.topic, row.data);
    EXPECT_EQ(reply.topic, row.replyTopic);
    EXPECT_EQ(reply.message, "");
    EXPECT_THAT(reply.data, StartsWith(row.start));
    EXPECT_THAT(reply.data, HasSubstr(row.part));
  }
}

}  // namespace
}  // namespace orvane::test
