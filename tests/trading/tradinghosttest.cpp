#include <algorithm>
#include <fstream>
#include <random>

#include <gmock/gmock.h>
#include <iconv.h>

#include "host/authagent.h"
#include "host/baseinformation.h"
#include "host/codeservice.h"
#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

using ::testing::HasSubstr;
class TradingHostTest : public DeskTest {
 protected:
  // Why a host with quotes from `file` does not start.
  std::string faultOf(const std::filesystem::path& dir, QuoteMode quotes = QuoteMode::Still,
                      const std::filesystem::path& file = {}) const {
    try {
      const TradingHost host({dir, quotes, file, 1}, clock_);
    } catch (const std::runtime_error& e) {
      return e.what();
    }
    return "";
  }
};

TEST_F(TradingHostTest, ASecondTerminalIsRefused) {
  EXPECT_THAT(faultOf(dir_), HasSubstr("database is locked"));
  EXPECT_THAT(faultOf(dir_), HasSubstr("stop the program that uses it"));
  EXPECT_EQ(faultOf(dir_ / "other"), "there can only be one trading host in a process");
}

TEST_F(TradingHostTest, ADatabaseThatCannotBeUsedIsLeftAlone) {
  const std::string advice = "; move the file away, or name another folder with --data";
  const std::string file = "cannot use the database " + (dir_ / "terminal.db").string() + ": ";
  host_.reset();
  change(dir_, "DROP TABLE sync_rule");
  EXPECT_EQ(faultOf(dir_), file + "no such table: sync_rule" + advice);
  const std::string readOnly = "the file is read-only; make the file and its folder writable";
  disk_.isReadOnly = true;
  EXPECT_THAT(faultOf(dir_), HasSubstr(readOnly + "; nor can it be read: cannot use"));
  disk_.isReadOnly = false;
  change(dir_, "PRAGMA user_version = 7");
  EXPECT_THAT(faultOf(dir_), HasSubstr("its version is 7, this program reads versions 1 to 3" + advice));
  std::ofstream(dir_ / "terminal.db", std::ios::trunc) << "not a database, and longer than the header of one hundred"
                                                          " bytes, because a shorter file counts as empty";
  EXPECT_EQ(faultOf(dir_), file + "file is not a database" + advice);
  EXPECT_THAT(faultOf("/proc/none"), HasSubstr("cannot use the database /proc/none/terminal.db: "));
  std::ofstream(dir_ / "terminal.db", std::ios::trunc).flush();
  disk_.isReadOnly = true;
  EXPECT_EQ(faultOf(dir_), file + readOnly) << "an empty file has nothing to read";
}

TEST_F(TradingHostTest, BadQuoteFilesNameTheLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"0,rb2701.SHFE,3326\nx,rb2701.SHFE,1\n", "line 2: bad milliseconds: x"},
      {"0,rb2701.SHFE\n", "line 1: expected milliseconds,instrument,price"},
      {"\n", "holds no price"},
      {"# comment\r\n-1,rb2701.SHFE,3326\n", "line 2: milliseconds must not be negative"},
      {"0,rb0000.SHFE,3326\n", "line 1: unknown instrument rb0000.SHFE"},
      {"0,rb2701.SHFE,3326x\n", "line 1: bad price: 3326x"},
      {"0,rb2701.SHFE,nan\n", "line 1: price nan is outside 3077 to 3539"},
      {"0,rb2701.SHFE,3077\n0,rb2701.SHFE,3076\n", "line 2: price 3076 is outside 3077 to 3539"},
      {"0,rb2701.SHFE,3539\n0,rb2701.SHFE,3540\n", "line 2: price 3540 is outside 3077 to 3539"},
      {"5,rb2701.SHFE,3326\n4,rb2701.SHFE,3327\n", "line 2: times must not go back"},
  };
  host_.reset();
  for (const auto& [text, fault] : cases) {
    std::ofstream(dir_ / "quotes.csv") << text;
    EXPECT_THAT(faultOf(dir_, QuoteMode::Replay, dir_ / "quotes.csv"), HasSubstr(fault));
  }
  EXPECT_THAT(faultOf(dir_, QuoteMode::Replay, dir_ / "none.csv"),
              HasSubstr("none.csv cannot be read: No such file or directory; give"));
  EXPECT_THAT(faultOf(dir_, QuoteMode::Replay, dir_), HasSubstr("cannot be read: Is a directory; give"));
}

TEST_F(TradingHostTest, ReplayedQuotesFillTheOrdersTheyReach) {
  host_.reset();
  std::ofstream(dir_ / "quotes.csv") << "0,rb2701.SHFE,3326\n0,SR701.CZCE,5450\n3600000,rb2701.SHFE,3327\n";
  open(QuoteMode::Replay, dir_ / "quotes.csv");
  EXPECT_THAT(inbox_.next("trade.push").data, HasSubstr("\"localOrderId\":\"1006\""));
  EXPECT_EQ(position(1, kRebar).currentPrice, 3326);
  EXPECT_EQ(setQuote(kRebar, 3327).message, "quote.set 只能在 --quotes still 方式下使用");
  EXPECT_THAT(ask("terminal.info", "").data, HasSubstr(R"("quotes":"replay")"));
  reopen();
  EXPECT_EQ(position(1, kRebar).currentPrice, 3326) << "a stop replays no more prices";
}

TEST_F(TradingHostTest, AsynchronousRequestsAreAnsweredByAMessage) {
  IUIProxyMgr& proxy = *IUIProxyMgr::getInstance();
  proxy.requestAsync(5, "terminal.info", "");
  const MobileMessage later = inbox_.next("terminal.info");
  EXPECT_EQ(later.requestId, 5);
  EXPECT_EQ(later.data,
            R"({"name":"pocket-terminal","quotes":"still","accounts":4,"instruments":20,"workingOrders":5})");
  proxy.requestAsync(6, "no.such", "");
  EXPECT_EQ(utf8(inbox_.next("no.such").message), "未知的功能: no.such");
}

TEST_F(TradingHostTest, EachOwnTopicChecksItsBody) {
  struct Row {
    const char *topic, *body, *message;
    const char* data = "";  // a part of it
  };
  const Row rows[] = {
      {"quote.set", R"({"hashCode":42,"price":1})", "没有合约 42"},
      {"quote.set", R"({"hashCode":1000001,"price":3326.5})", "价格 3326.5 不是最小变动价位 1 的整数倍"},
      {"quote.set", R"({"hashCode":1000001,"price":9999})", "价格 9999 超出涨跌停范围 3077 至 3539"},
      {"quote.set", R"({"hashCode":1000001,"price":"x"})", "quote.set 缺少数值 price"},
      {"quote.set", R"({"price":1})", "quote.set 缺少整数 hashCode"},
      {"quote.set", "[}", R"(quote.set 需要 {"hashCode": 整数, "price": 数})"},
      {"quote.set", R"({"hashCode":1000001,"price":3340})", ""},
      {"quote.curve", R"({"hashCodes":[1000001,9],"points":4})", "没有合约 9"},
      {"quote.curve", R"({"hashCodes":["a"],"points":4})", "quote.curve 缺少整数数组 hashCodes"},
      {"quote.curve", R"({"hashCodes":[],"points":0})", "quote.curve 的 points 须在 4 至 2000 之间"},
      {"quote.curve", R"({"hashCodes":[1000001],"points":4})", "", R"("prices":[3325.0,3340.0]})"},
      {"order.rates", R"({"index":1,"hashCode":1000002})", "",
       R"({"longByMoney":0.14,"longByVolume":0.0,"shortByMoney":0.14,"shortByVolume":0.0,)"
       R"("commissionByMoney":0.0,"commissionByVolume":10.0,"commissionMinimum":0.0,"saleTax":0.0})"},
      {"order.rates", R"({"index":3,"hashCode":5100001})", "",
       R"({"longByMoney":1.0,"longByVolume":0.0,"shortByMoney":0.0,"shortByVolume":4200.0,)"
       R"("commissionByMoney":0.0,"commissionByVolume":1.6,"commissionMinimum":0.0,"saleTax":0.0})"},
      {"order.rates", R"({"index":9,"hashCode":1000002})", "没有账户 9"},
      {"order.rates", R"({"index":1,"hashCode":9})", "没有合约 9"},
      {"order.rates", R"({"index":1})", "order.rates 缺少整数 hashCode"},
      {"order.rates", R"({"index":1.5,"hashCode":1000002})", "order.rates 缺少整数 index"},
      {"order.rates", "[]", R"(order.rates 需要 {"index": 整数, "hashCode": 整数})"},
      {"equity.list", R"({"from":0,"to":1,"points":4})", "equity.list 缺少整数 index"},
      {"equity.list", R"({"index":1,"from":0.5,"to":1,"points":4})", "equity.list 缺少整数 from"},
      {"equity.list", R"({"index":1,"from":0,"to":"x","points":4})", "equity.list 缺少整数 to"},
      {"equity.list", R"({"index":1,"from":0,"to":1,"points":3})", "equity.list 的 points 须在 4 至 2000 之间"},
      {"equity.list", R"({"index":1,"from":0,"to":1,"points":2001})", "equity.list 的 points 须在 4 至 2000 之间"},
      {"equity.list", R"({"index":1,"from":2,"to":1,"points":4})", "equity.list 的 from 不得晚于 to"},
      {"equity.list", R"({"index":9,"from":0,"to":1,"points":4})", "没有账户 9"},
      {"equity.list", "[1]", R"(equity.list 需要 {"index": 整数, "from": 毫秒, "to": 毫秒, "points": 整数})"},
      {"equity.list", R"({"index":1,"from":-9223372036854775808,"to":9223372036854775807,"points":4})", ""},
  };
  for (const Row& it : rows) {
    const MobileMessage reply = ask(it.topic, it.body);
    EXPECT_EQ(reply.message, it.message) << it.body;
    EXPECT_EQ(reply.topic, it.topic);
    EXPECT_THAT(reply.data, HasSubstr(it.data)) << it.body;
  }
}

TEST_F(TradingHostTest, EntitlementsComeFromTheDatabase) {
  IAuthAgent* auth = IAuthAgent::getInstance();
  EXPECT_EQ(auth->checkUser("order.new").code, 0);
  EXPECT_TRUE(auth->hasPrivilege(capital(1).id, AccountPrivilege::TriggerOrder));
  EXPECT_FALSE(auth->hasPrivilege(capital(2).id, AccountPrivilege::TriggerOrder));
  reopen(
      "UPDATE account SET ordinary_orders = 0 WHERE idx = 1;"
      "INSERT INTO refused_function VALUES ('order.new', NULL, '只读用户'), ('order.cancel', 2, '账户冻结')");
  auth = IAuthAgent::getInstance();
  EXPECT_TRUE(auth->hasPrivilege(capital(1).id, AccountPrivilege::TriggerOrder));
  EXPECT_FALSE(auth->hasPrivilege(capital(1).id, AccountPrivilege::OrdinaryOrder));
  EXPECT_EQ(utf8(auth->checkUser("order.new").message), "只读用户");
  EXPECT_EQ(auth->checkUser("order.cancel").code, 0);
  EXPECT_EQ(utf8(auth->checkAccount("order.cancel", capital(2).id).message), "账户冻结");
  EXPECT_EQ(auth->checkAccount("order.cancel", capital(1).id).code, 0);
}

TEST_F(TradingHostTest, MasterDataIsGbkAtTheBoundary) {
  EXPECT_EQ(utf8(gBaseInformationMap->exchangeFullNames.at(1)), "上海期货交易所");
  ICodeService* codes = IServiceRouter::instance()->getBaseService()->getCodeService();
  SymbolCode symbol;
  EXPECT_EQ(codes->getCodeByHash(kTreasury, symbol).code, 0);
  EXPECT_EQ(symbol.code, "T2703");
  EXPECT_EQ(utf8(codes->getCodeByHash(42, symbol).message), "没有合约 42");
  std::string type;
  std::string name;
  EXPECT_TRUE(IUIProxyMgr::getInstance()->getCodeTypeName(kTreasury, type, name));
  EXPECT_EQ(utf8(type), "国债");
  EXPECT_EQ(utf8(name), "十年期国债2703");
  EXPECT_FALSE(IUIProxyMgr::getInstance()->getCodeTypeName(42, type, name));
  host_.reset();
  EXPECT_EQ(IServiceRouter::instance()->getBaseService(), nullptr);
}

TEST_F(TradingHostTest, SampleFillsExplainTodaysVolumesAndCommission) {
  host_.reset();
  SQLite::Database db((dir_ / "terminal.db").string());
  SQLite::Statement wrong(db,
                          "SELECT idx FROM account WHERE abs(commission - (SELECT total(commission) FROM orders o"
                          " JOIN fill f ON f.order_id = o.id WHERE o.account = idx)) > 0.0001 UNION ALL"
                          " SELECT hash_code FROM holding h GROUP BY account, hash_code HAVING sum(today_volume) <>"
                          " (SELECT total(fill_volume) FROM orders o WHERE comb_offset = 1 AND o.account = h.account"
                          " AND o.hash_code = h.hash_code)");
  EXPECT_FALSE(wrong.executeStep()) << "account or hash code " << wrong.getColumn(0).getString();
}

TEST_F(TradingHostTest, SelectorsChooseAndFlagsReturnWhoIsLoggedIn) {
  std::vector<TradingAccount> accounts;
  std::list<int32_t> available;
  TradeUtils::getAllTradingAccount(trade(), std::list<int32_t>{4, 3, 99, 4}, 3, accounts, available);
  ASSERT_EQ(accounts.size(), 2U);
  EXPECT_EQ(accounts[0].id.index, 3);
  EXPECT_EQ(available, std::list<int32_t>{4}) << "account 3 is not logged in";
  EXPECT_EQ(TradeUtils::getTradingAccountID(trade(), {99}).size(), 0U);
  TradingAccountID unknown;
  unknown.index = 99;
  std::vector<CreditInfoRecord> credits;
  EXPECT_EQ(utf8(trade()->queryCreditInfo(unknown, credits).message), "没有账户 99");
  MarginRateResult rate;
  EXPECT_EQ(utf8(trade()->queryMarginRate({unknown, position(1, kSugar).code}, rate).message), "没有 SR701 的保证金率");
  std::vector<CodeTypePosition> types;
  IUIProxyMgr::getInstance()->getCodeTypePositions({unknown}, true, true, types);
  EXPECT_TRUE(types.empty());
}

TEST(CodeConvertTest, KeepsEveryCharacterAndReplacesInvalidBytes) {
  EXPECT_EQ(CodeConvert::utf8_to_gbk("\xE8\x9E\xBA"), "\xC2\xDD");
  const std::string mixed = "多空 €𠮷😀 abc";
  EXPECT_EQ(CodeConvert::gbk_to_utf8(CodeConvert::utf8_to_gbk(mixed)), mixed);
  EXPECT_EQ(CodeConvert::utf8_to_gbk("a\xFF"
                                     "b\xE8"),
            "a?b?");
  std::string longText;
  for (int i = 0; i < 1000; ++i) longText += "螺纹";
  EXPECT_EQ(CodeConvert::gbk_to_utf8(CodeConvert::utf8_to_gbk(longText)), longText);
}

// Converts with iconv alone, skipping one byte at each error.
std::string iconvUtf8(std::string text) {
  iconv_t handle = iconv_open("UTF-8", "GB18030");
  std::string result(text.size() * 3, '\0');
  char* from = text.data();
  char* to = result.data();
  size_t room = result.size();
  for (size_t left = text.size(); iconv(handle, &from, &left, &to, &room) == static_cast<size_t>(-1); ++from, --left) {
    to = std::copy_n("\xEF\xBF\xBD", 3, to);
    room -= 3;
  }
  iconv_close(handle);
  result.resize(result.size() - room);
  return result;
}

TEST(CodeConvertTest, GbkConvertsLikeIconv) {
  std::string pair = "ab";
  for (int bytes = 0; bytes < 0x10000; ++bytes) {
    pair[0] = static_cast<char>(bytes >> 8);
    pair[1] = static_cast<char>(bytes);
    ASSERT_EQ(CodeConvert::gbk_to_utf8(pair), iconvUtf8(pair)) << bytes;
  }
  std::mt19937 random(5);
  for (int round = 0; round < 20'000; ++round) {
    std::string text(random() % 24, '\0');
    for (char& c : text) {  // gives Chinese, four-byte characters and invalid bytes
      const unsigned kind = random() % 4;
      c = static_cast<char>(kind == 0 ? random() : kind == 1 ? 0x30 + random() % 10 : 0xB0 + random() % 0x40);
    }
    ASSERT_EQ(CodeConvert::gbk_to_utf8(text), iconvUtf8(text)) << ::testing::PrintToString(text);
  }
}

TEST(TimestampTest, IsWrittenInIso8601) {
  EXPECT_THAT(Timestamp::now(OrvTimeZone::Default).toISO8601String(),
              ::testing::MatchesRegex("2[0-9]+-[0-9]+-[0-9]+T[0-9:]+[.][0-9]+[+-][0-9]+"));
  EXPECT_TRUE(isTimeEnabled());
}

}  // namespace
}  // namespace orvane::terminal::testing
