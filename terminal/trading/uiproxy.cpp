#include "terminal/trading/uiproxy.h"

#include <cmath>
#include <future>
#include <utility>

#include <fmt/format.h>

#include "host/common.h"
#include "terminal/trading/codetypeledger.h"
#include "terminal/trading/equitylist.h"
#include "terminal/trading/jsontext.h"
#include "terminal/trading/ledger.h"
#include "terminal/trading/objectbody.h"

namespace orvane::terminal {
namespace {

constexpr std::string_view kEquityList = "equity.list";

const char* modeName(QuoteMode mode) {
  switch (mode) {
    case QuoteMode::Walk:
      return "walk";
    case QuoteMode::Still:
      return "still";
    default:
      return "replay";
  }
}

void writeQuote(JsonText& row, const Book& book, const Instrument& it) {
  row.member("hashCode", it.symbol.hashCode);
  row.member("codeExch", codeKey(book, it.symbol));
  row.member("codeName", CodeConvert::gbk_to_utf8(it.name));
  row.member("codeClass", it.symbol.codeClass);
  row.member("lastPrice", it.last);
  row.member("bidPrice", it.bid());
  row.member("askPrice", it.ask());
  row.member("preClosePrice", it.preClose);
  row.member("preSettlementPrice", it.preSettlement);
  row.member("lowerLimit", it.lowerLimit);
  row.member("upperLimit", it.upperLimit);
  row.member("priceTick", it.priceTick);
  row.member("volumeStep", it.lot);
  row.member("maxVolume", it.maxVolume);
  row.member("multiplier", it.multiplier);
}

// What the account is charged for orders in the instrument.
std::string ratesText(const Book& book, const Key& key) {
  const MarginRate margin = marginRate(book, key);
  const auto found = book.commissionRates.find({key.account, book.instruments.at(key.hashCode).codeType});
  const CommissionRate commission = found == book.commissionRates.end() ? CommissionRate{} : found->second;
  JsonText row;
  row.beginObject();
  row.member("longByMoney", margin.longs.byMoney);
  row.member("longByVolume", margin.longs.byVolume);
  row.member("shortByMoney", margin.shorts.byMoney);
  row.member("shortByVolume", margin.shorts.byVolume);
  row.member("commissionByMoney", commission.rate.byMoney);
  row.member("commissionByVolume", commission.rate.byVolume);
  row.member("commissionMinimum", commission.minimum);
  row.member("saleTax", commission.saleTax);
  row.endObject();
  return row.text();
}

// Why a price may not be set by hand, UTF-8; empty if it may.
std::string quoteFault(const Instrument* instrument, int64_t hashCode, double price) {
  if (instrument == nullptr) return fmt::format("没有合约 {}", hashCode);
  if (!(price >= instrument->lowerLimit && price <= instrument->upperLimit)) {
    return fmt::format("价格 {} 超出涨跌停范围 {} 至 {}", price, instrument->lowerLimit, instrument->upperLimit);
  }
  if (std::abs(price - roundToTick(price, instrument->priceTick)) > instrument->priceTick * 1e-6) {
    return fmt::format("价格 {} 不是最小变动价位 {} 的整数倍", price, instrument->priceTick);
  }
  return {};
}

}  // namespace

// The dispatch table of the terminal's own topics.
const std::array<UiProxy::Topic, 6> UiProxy::kTopics{{
    {"terminal.info",
     [](UiProxy& proxy, const std::string& /*body*/) {
       return Answer{"", proxy.terminalInfo()};
     }},
    {"quote.list",
     [](UiProxy& proxy, const std::string& /*body*/) {
       return Answer{"", proxy.quoteList()};
     }},
    {"quote.curve",
     [](UiProxy& proxy, const std::string& body) {
       const QuoteCurves::Answer made = proxy.curves_.answer(proxy.desk_, body);
       return Answer{made.fault, made.text};
     }},
    {kEquityList, [](UiProxy& proxy, const std::string& body) { return proxy.equityList(body); }},
    {"order.rates", [](UiProxy& proxy, const std::string& body) { return proxy.rates(body); }},
    {"quote.set",
     [](UiProxy& proxy, const std::string& body) {
       return Answer{proxy.setQuote(body), ""};
     }},
}};

std::vector<std::string_view> UiProxy::topics() {
  std::vector<std::string_view> names;
  names.reserve(kTopics.size());
  for (const Topic& topic : kTopics) names.push_back(topic.name);
  return names;
}

void UiProxy::requestSync(const std::string& topic, const std::string& data, MobileMessage& reply) {
  reply.topic = topic;
  put(answer(topic, data), reply);
}

void UiProxy::requestAsync(int64_t requestId, const std::string& topic, const std::string& data) {
  MobileMessage reply;
  reply.requestId = requestId;
  reply.topic = topic;
  if (topic == kEquityList) {  // it shows nothing that is not stored
    return readEquity(data, [&desk = desk_, reply = std::move(reply)](const Answer& made) mutable {
      put(made, reply);
      desk.outbox().post(std::move(reply));
    });
  }
  put(answer(topic, data), reply);
  desk_.whenStored([&desk = desk_, reply = std::move(reply)](const std::string& failure) mutable {
    if (!failure.empty()) {
      reply.message = CodeConvert::utf8_to_gbk(failure);
      reply.data.clear();
    }
    desk.outbox().post(std::move(reply));
  });
}

void UiProxy::put(const Answer& made, MobileMessage& reply) {
  reply.message = CodeConvert::utf8_to_gbk(made.message);
  reply.data = CodeConvert::utf8_to_gbk(made.data);
}

UiProxy::Answer UiProxy::answer(const std::string& topic, const std::string& body) {
  for (const Topic& each : kTopics) {
    if (each.name == topic) return each.answer(*this, body);
  }
  return {fmt::format("未知的功能: {}", topic), ""};
}

std::string UiProxy::terminalInfo() {
  return desk_.read([&](const Book& book) {
    JsonText json;
    json.beginObject();
    json.member("name", std::string("pocket-terminal"));
    json.member("quotes", std::string(modeName(mode_)));
    json.member("accounts", static_cast<int64_t>(book.accounts.size()));
    json.member("instruments", static_cast<int64_t>(book.instruments.size()));
    json.member("workingOrders", static_cast<int64_t>(book.working.size()));
    json.endObject();
    return json.text();
  });
}

std::string UiProxy::quoteList() {
  return desk_.read([](const Book& book) {
    return jsonRows(book.instruments, [&](JsonText& row, const auto& entry) { writeQuote(row, book, entry.second); });
  });
}

UiProxy::Answer UiProxy::rates(const std::string& body) {
  ObjectBody object("order.rates", body, R"({"index": 整数, "hashCode": 整数})");
  const Key key{object.int32("index"), object.int64("hashCode")};
  if (!object.fault().empty()) return {object.fault(), ""};
  return desk_.read([&](const Book& book) -> Answer {
    if (!book.accounts.contains(key.account)) return {fmt::format("没有账户 {}", key.account), ""};
    if (book.instrument(key.hashCode) == nullptr) return {fmt::format("没有合约 {}", key.hashCode), ""};
    return {"", ratesText(book, key)};
  });
}

UiProxy::Answer UiProxy::equityList(const std::string& body) {
  std::promise<Answer> made;
  readEquity(body, [&](const Answer& answer) { made.set_value(answer); });
  return made.get_future().get();
}

void UiProxy::readEquity(const std::string& body, std::function<void(const Answer&)> deliver) {
  EquityQuery query;
  std::string fault = readEquityQuery(body, query);
  const int32_t index = query.range.account;
  if (fault.empty() && desk_.read([&](const Book& book) { return book.account(index) == nullptr; })) {
    fault = fmt::format("没有账户 {}", index);
  }
  if (!fault.empty()) return deliver({fault, ""});
  desk_.readEquity(query.range, [points = query.points, deliver = std::move(deliver)](std::vector<EquityRow> rows,
                                                                                      const StoreError* error) {
    deliver(error != nullptr ? Answer{error->unreadable(), ""} : Answer{"", equityText(std::move(rows), points)});
  });
}

std::string UiProxy::setQuote(const std::string& body) {
  if (mode_ != QuoteMode::Still) return "quote.set 只能在 --quotes still 方式下使用";
  ObjectBody object("quote.set", body, R"({"hashCode": 整数, "price": 数})");
  const Price wanted{object.int64("hashCode"), object.number("price")};
  if (!object.fault().empty()) return object.fault();
  std::string fault = desk_.read(
      [&](const Book& book) { return quoteFault(book.instrument(wanted.first), wanted.first, wanted.second); });
  if (!fault.empty()) return fault;
  try {
    engine_.movePrices({wanted}, true);
  } catch (const StoreError& error) {
    return error.refusal();
  }
  return {};
}

double UiProxy::getDefaultMarginRate(const SymbolCode& symbol) {
  return desk_.read([&](const Book& book) {
    const Instrument* instrument = book.instrument(symbol.hashCode);
    return instrument == nullptr ? 1.0 : instrument->defaultMarginRate;
  });
}

void UiProxy::getCodeTypePositions(const std::vector<TradingAccountID>& accounts, bool flag1, bool flag2,
                                   std::vector<CodeTypePosition>& positions) {
  positions = desk_.read([&](const Book& book) { return codeTypePositions(book, accounts, flag1, flag2); });
}

bool UiProxy::getCodeTypeName(int64_t hashCode, std::string& typeText, std::string& nameText) {
  return desk_.read([&](const Book& book) {
    const Instrument* instrument = book.instrument(hashCode);
    if (instrument == nullptr) return false;
    typeText = instrument->codeType;
    nameText = instrument->name;
    return true;
  });
}

}  // namespace orvane::terminal
