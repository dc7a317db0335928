#include <atomic>
#include <list>
#include <memory>

#include "bench/barequeues.h"
#include "bench/figure.h"
#include "bench/localserver.h"
#include "bench/naivewriter.h"
#include "bench/paperdesk.h"
#include "bench/placement.h"
#include "bench/timing.h"
#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "pocketagent/mobileworker.h"
#include "terminal/trading/tradinghost.h"
#include "tests/system/terminalprocess.h"

namespace orvane::bench {
namespace {

// A mobile service that records when a message arrived.
class Catcher : public LocalServer {
 public:
  ResultStatus send(const MobileMessage& message) override {
    caught_ = wallTime();
    if (data_.empty()) {
      placement_.placeConsumer();  // the thread that sends is the consumer
    }
    data_ = message.data;
    done_ = true;
    return {};
  }

  // Runs `push` and spins until the message arrives. Returns the time between the two.
  template <typename Push>
  double catchOne(Push push) {
    done_ = false;
    const double begin = wallTime();
    push();
    while (!done_) {
    }
    return caught_ - begin;
  }
  std::string takeData() { return std::move(data_); }

 private:
  const Placement placement_;
  double caught_ = 0;
  std::string data_;
  std::atomic<bool> done_ = false;
};

constexpr const char* kBody = "[1,2,3,4]";

std::string writeNaively(const std::vector<TradingAccount>& accounts) {
  return NaiveWriter().rows(accounts, [](NaiveWriter& row, const TradingAccount& account) {
    const bool futures = account.id.marketType == 1 || account.id.marketType == 8;
    const double invested = account.baseAmount + account.deposit;
    row.member("userCode", account.id.userCode);
    row.member("index", account.id.index);
    row.member("accountType", futures ? 0 : 1);
    row.member("lastAmount", account.id.marketType == 2 || account.id.marketType == 16
                                 ? account.dynamicAmount
                                 : invested + account.preCloseProfit - account.withdraw);
    row.member("profitRatio", invested > 0.000001 ? account.preCloseProfit / invested : 0.0);
    row.member("netLever", account.netLever);
    row.member("preCloseProfit", account.preCloseProfit);
    row.member("totalLever", account.totalLever);
    row.member("risk", account.risk);
    row.member("available", account.available);
    row.member("todayFloatingProfit", account.todayFloatingProfit);
    row.member("amassFloatingProfit", 0.0);
    row.member("closeProfit", account.closeProfit);
    row.member("maintainAmount", account.maintainAmount);
    row.member("dynamicAmount", account.dynamicAmount);
    row.member("preBalance", account.preBalance);
    row.member("withdrawQuota", account.withdrawQuota);
    row.member("currMargin", account.currMargin);
    row.member("frozenMargin", account.frozenMargin);
    row.member("deposit", account.deposit);
    row.member("withdraw", account.withdraw);
    row.member("commission", account.commission);
    row.member("accountStatus", account.id.index == 3 ? 0 : 1);  // of the sample accounts the third is offline
  });
}

// The parts of a request without the library: parse, hand-off, host call, write.
class BareAgent {
 public:
  explicit BareAgent(IMobileSrv& server) : server_(server) {}

  void push(int64_t requestId, const std::string& body) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseStopWhenDoneFlag>(body.c_str());
    auto request = std::make_shared<Request>();
    request->requestId = requestId;
    for (const JsonValue& element : document.GetArray()) request->selector.push_back(element.GetInt());
    queue_.enqueue(request);
  }

 private:
  struct Request {
    int64_t requestId = 0;
    std::list<int32_t> selector;
  };

  void run(const Request& request) {
    std::vector<TradingAccount> accounts;
    std::list<int32_t> available;
    TradeUtils::getAllTradingAccount(IServiceRouter::instance()->getTradeService(), request.selector, 3, accounts,
                                     available);
    server_.send({request.requestId, "capital.list", "", writeNaively(accounts), kReplyTerminalType});
  }

  IMobileSrv& server_;
  SwapQueue<std::shared_ptr<Request>> queue_{[this](std::shared_ptr<Request>& request) { run(*request); }};
};

struct Bench {
  Bench() {
    host.setMobileServer(&catcher);
    oursMedian();
    const std::string ours = catcher.takeData();
    bareMedian();
    requireEqual(ours, catcher.takeData());
  }

  terminal::TradingOptions options() const {
    terminal::TradingOptions options;
    options.dataDir = folder.path();
    options.quotes = terminal::QuoteMode::Still;
    return options;
  }
  // Each worker exists for one slice only. The library's wakes each millisecond, which keeps its processor from
  // sleeping and would do the same for the yardstick.
  double oursMedian() {
    MobileWorker worker;
    worker.start();
    return median([&] { worker.push(1, 8, "capital.list", kBody); });
  }
  double bareMedian() {
    BareAgent bare(catcher);
    return median([&] { bare.push(1, kBody); });
  }

  // The median of 100 requests, each to an idle worker.
  template <typename Push>
  double median(Push push) {
    constexpr double kRest = 30'000;  // until the worker sleeps
    catcher.takeData();
    catcher.catchOne(push);  // places the worker
    std::vector<double> samples;
    for (int i = 0; i < 100; ++i) {
      for (const double begin = wallTime(); wallTime() - begin < kRest;) {
      }
      samples.push_back(catcher.catchOne(push));
    }
    return quantile(samples, 0.5);
  }

  test::TempDir folder;
  terminal::TradingHost host{options()};
  Catcher catcher;
};

Sides sides() {
  const auto bench = std::make_shared<Bench>();
  return {[bench] { return bench->oursMedian(); }, [bench] { return bench->bareMedian(); }};
}

}  // namespace

std::vector<Figure> requestFigures() {
  return {{"`push` to `send`, capital.list of 4 accounts", "its bare parts: parse, hand-off, host call, write", "ns",
           Bound::AtMost, 1.15, 1.00, 101, sides}};
}

}  // namespace orvane::bench
