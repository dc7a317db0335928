#include "terminal/trading/services.h"

#include <stdexcept>

#include <fmt/format.h>

#include "host/baseinformation.h"
#include "host/common.h"
#include "terminal/trading/creditledger.h"

namespace orvane {

std::shared_ptr<BaseInformationMap> gBaseInformationMap = std::make_shared<BaseInformationMap>();

namespace terminal {
namespace {

std::atomic<Services*> gServices{nullptr};

class Router : public IServiceRouter {
 public:
  IBaseService* getBaseService() override { return gServices; }
  ITradeService* getTradeService() override {
    Services* services = gServices;
    return services == nullptr ? nullptr : &services->trade();
  }
};

ResultStatus failure(const std::string& text) { return {-1, CodeConvert::utf8_to_gbk(text)}; }

// With an account: functions refused on it. Without one: functions refused to the user.
ResultStatus refusalOf(const Book& book, const std::string& function, const TradingAccountID* account) {
  for (const RefusedFunction& it : book.refusedFunctions) {
    if (it.function != function) continue;
    const bool applies = account == nullptr ? !it.account : it.account == account->index;
    if (applies) return {-1, it.reason};
  }
  return {};
}

}  // namespace

ResultStatus CodeService::getCodeProperty(const SymbolCode& symbol, CodeProperty& property, int64_t /*version*/) {
  return desk_.read([&](const Book& book) {
    const Instrument* instrument = book.instrument(symbol.hashCode);
    if (instrument == nullptr) return failure(fmt::format("没有合约 {}", symbol.hashCode));
    property.symbol = instrument->symbol;
    property.codeName = instrument->name;
    return ResultStatus{};
  });
}

ResultStatus CodeService::getCodeByHash(const int64_t& hashCode, SymbolCode& symbol) {
  return desk_.read([&](const Book& book) {
    const Instrument* instrument = book.instrument(hashCode);
    if (instrument == nullptr) return failure(fmt::format("没有合约 {}", hashCode));
    symbol = instrument->symbol;
    return ResultStatus{};
  });
}

ResultStatus TradeService::queryCreditInfo(const TradingAccountID& account, std::vector<CreditInfoRecord>& records) {
  return desk_.read([&](const Book& book) {
    const Account* found = book.account(account.index);
    if (found == nullptr) return failure(fmt::format("没有账户 {}", account.index));
    if (found->credit) records.push_back(creditInfo(book, *found));
    return ResultStatus{};
  });
}

ResultStatus TradeService::queryMarginRate(const MarginRateQuery& query, MarginRateResult& result) {
  return desk_.read([&](const Book& book) {
    const MarginRate* rate = book.marginRate({query.account.index, query.code.hashCode});
    if (rate == nullptr) return failure(fmt::format("没有 {} 的保证金率", query.code.code));
    result.account = query.account;
    result.code = query.code;
    result.a = rate->longs.byMoney;
    result.b = rate->longs.byVolume;
    result.c = rate->shorts.byMoney;
    result.d = rate->shorts.byVolume;
    return ResultStatus{};
  });
}

ResultStatus AuthAgent::checkUser(const std::string& function) {
  return desk_.read([&](const Book& book) { return refusalOf(book, function, nullptr); });
}

ResultStatus AuthAgent::checkAccount(const std::string& function, const TradingAccountID& account) {
  return desk_.read([&](const Book& book) { return refusalOf(book, function, &account); });
}

bool AuthAgent::hasPrivilege(const TradingAccountID& account, AccountPrivilege privilege) {
  return desk_.read([&](const Book& book) {
    const Account* found = book.account(account.index);
    if (found == nullptr) return false;
    return privilege == AccountPrivilege::TriggerOrder ? found->triggerOrders : found->ordinaryOrders;
  });
}

Services::Services(Desk& desk, Engine& engine, const QuoteCurves& curves, QuoteMode mode)
    : code_(desk), trade_(desk, engine), auth_(desk), monitor_(desk, engine), proxy_(desk, engine, curves, mode) {
  Services* none = nullptr;
  if (!gServices.compare_exchange_strong(none, this)) {
    throw std::runtime_error("there can only be one trading host in a process");
  }
  gBaseInformationMap =
      desk.read([](const Book& book) { return std::make_shared<BaseInformationMap>(book.exchanges); });
}

Services::~Services() { gServices = nullptr; }

}  // namespace terminal

IServiceRouter* IServiceRouter::instance() {
  static terminal::Router router;
  return &router;
}

IAuthAgent* IAuthAgent::getInstance() { return &terminal::gServices.load()->auth(); }

IPositionMonitor* IPositionMonitor::getInstance() { return &terminal::gServices.load()->monitor(); }

IUIProxyMgr* IUIProxyMgr::getInstance() { return &terminal::gServices.load()->proxy(); }

}  // namespace orvane
