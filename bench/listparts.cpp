#include <algorithm>
#include <filesystem>
#include <list>

#include "bench/figure.h"
#include "bench/lists.h"
#include "bench/localserver.h"
#include "bench/paperdesk.h"
#include "bench/timing.h"
#include "host/baseinformation.h"
#include "host/common.h"
#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "serialise/codetext.h"
#include "serialise/orderlist.h"
#include "serialise/positionlist.h"
#include "tasks/marginrule.h"
#include "terminal/json.h"
#include "terminal/trading/tradinghost.h"

namespace orvane::bench {
namespace {

ITradeService* tradeService() { return IServiceRouter::instance()->getTradeService(); }

// The steps of one kind of list, repeated outside the library's task.
struct Positions {
  static constexpr const char* kTopic = "position.list";
  static constexpr bool kWritingAsksHost = false;
  using Rows = std::vector<PositionEntry>;

  static std::list<Position> query(const std::list<int32_t>& selector) {
    std::list<Position> positions;
    std::list<int32_t> available;
    TradeUtils::getAllPosition(tradeService(), selector, kQueryList, positions, available);
    return positions;
  }
  static void askForRow(const Position& position, PositionEntry& entry) {
    IRequestTask::findCodeType(position.code.hashCode, entry.codeType, entry.codeName);
    entry.marginRate = queryMarginRate(position.account, position.code);
    entry.exchangeName = CodeConvert::gbk_to_utf8(gBaseInformationMap->exchangeFullNames.at(position.code.exchangeId));
  }
  static Rows join(std::list<Position>& positions) {
    Rows rows;
    rows.reserve(positions.size());
    for (Position& position : positions) {
      PositionEntry& entry = rows.emplace_back();
      entry.position = std::move(position);
      entry.accountStatus = 1;
      askForRow(entry.position, entry);
    }
    return rows;
  }
  static void askForRows(const Rows& rows) {
    for (const PositionEntry& row : rows) {
      PositionEntry entry;
      askForRow(row.position, entry);
      keep(entry);
    }
  }
  static std::string write(const Rows& rows) { return serializePositionList(rows); }
};

struct Orders {
  static constexpr const char* kTopic = "order.list";
  static constexpr bool kWritingAsksHost = true;  // for each row's texts
  using Rows = std::list<Order>;

  static Rows query(const std::list<int32_t>& selector) {
    return TradeUtils::getAllOrder(tradeService(), TradeUtils::getTradingAccountID(tradeService(), selector));
  }
  static const Rows& join(const Rows& orders) { return orders; }  // the host's records are the rows
  static void askForRows(const Rows& orders) {
    for (const Order& order : orders) {
      keep(instrumentName(order.code));
      keep(CodeConvert::gbk_to_utf8(order.note));
      keep(CodeConvert::gbk_to_utf8(order.orderSource.sourceText));
    }
  }
  static std::string write(const Rows& rows) { return serializeOrderList(rows); }
};

template <typename List>
std::string replyOf(LastReply& server, const std::string& body) {
  DirectWorker worker;
  server.keepsData = true;
  worker.ask(List::kTopic, body);
  return std::move(server.data);
}

// The steps run one after the other on the same data, as in the terminal: a step is slower if its input has left the
// caches. What the host does for each row is inside another step, so it is measured alone and taken off there.
template <typename List>
void measureParts(ListCost& cost, LastReply& server, size_t rounds) {
  enum Step { Query, Join, Write, Check, RowCalls };
  std::array<std::vector<double>, 5> samples;
  const std::list<int32_t> accounts = accountsOfRows(cost.rows);
  const std::string reply = replyOf<List>(server, selectorOfRows(cost.rows));
  const size_t passes = rounds * std::max<size_t>(1, 1000 / cost.rows);
  for (size_t pass = 0; pass < passes; ++pass) {
    std::array<double, samples.size() + 1> times{};
    times[Query] = threadTime();
    auto records = List::query(accounts);
    times[Join] = threadTime();
    const typename List::Rows& rows = List::join(records);
    times[Write] = threadTime();
    const std::string text = List::write(rows);
    times[Check] = threadTime();
    keep(terminal::checkJson(text));
    times[RowCalls] = threadTime();
    List::askForRows(rows);
    times.back() = threadTime();
    for (size_t step = 0; step < samples.size(); ++step) {
      samples[step].push_back((times[step + 1] - times[step]) / static_cast<double>(cost.rows));
    }
    requireEqual(reply, text);
  }
  const auto median = [&](Step step) { return quantile(samples[step], 0.5); };
  const double inJoin = List::kWritingAsksHost ? 0 : median(RowCalls);
  const double inWrite = List::kWritingAsksHost ? median(RowCalls) : 0;
  cost.replyBytes = reply.size();
  cost.parts = {median(Query) + median(RowCalls), median(Join) - inJoin, median(Write) - inWrite, median(Check)};
}

}  // namespace

void measureLocalParts(ListCost& cost, const std::filesystem::path& deskFolder, size_t rounds) {
  terminal::TradingOptions options;
  options.dataDir = deskFolder;
  terminal::TradingHost host(options);
  LastReply server;
  host.setMobileServer(&server);
  (cost.topic == Positions::kTopic ? measureParts<Positions> : measureParts<Orders>)(cost, server, rounds);
  host.setMobileServer(nullptr);
}

}  // namespace orvane::bench
