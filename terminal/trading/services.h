#pragma once

#include <atomic>

#include "host/authagent.h"
#include "host/codeservice.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "terminal/trading/engine.h"
#include "terminal/trading/monitor.h"
#include "terminal/trading/uiproxy.h"

namespace orvane::terminal {

class CodeService : public ICodeService {
 public:
  explicit CodeService(Desk& desk) : desk_(desk) {}

  ResultStatus getCodeProperty(const SymbolCode& symbol, CodeProperty& property, int64_t version) override;
  ResultStatus getCodeByHash(const int64_t& hashCode, SymbolCode& symbol) override;

 private:
  Desk& desk_;
};

class TradeService : public ITradeService {
 public:
  TradeService(Desk& desk, Engine& engine) : desk_(desk), engine_(engine) {}

  ResultStatus insertOrder(const MobileNewOrderItem& order) override { return engine_.insertOrder(order); }
  ResultStatus cancelOrder(const CancelOrderRequest& request) override { return engine_.cancelOrder(request); }
  ResultStatus queryCreditInfo(const TradingAccountID& account, std::vector<CreditInfoRecord>& records) override;
  ResultStatus queryMarginRate(const MarginRateQuery& query, MarginRateResult& result) override;

  Desk& desk() { return desk_; }

 private:
  Desk& desk_;
  Engine& engine_;
};

class AuthAgent : public IAuthAgent {
 public:
  explicit AuthAgent(Desk& desk) : desk_(desk) {}

  ResultStatus checkUser(const std::string& function) override;
  ResultStatus checkAccount(const std::string& function, const TradingAccountID& account) override;
  bool hasPrivilege(const TradingAccountID& account, AccountPrivilege privilege) override;

 private:
  Desk& desk_;
};

// All services of one desk. The static functions of host/ use the one instance; without one, IServiceRouter has no base
// service.
class Services : public IBaseService {
 public:
  // Throws std::runtime_error if there is an instance already.
  Services(Desk& desk, Engine& engine, const QuoteCurves& curves, QuoteMode mode);
  ~Services() override;
  Services(const Services&) = delete;
  Services& operator=(const Services&) = delete;

  ICodeService* getCodeService() override { return &code_; }
  IMobileSrv* getMobileSrv() override { return mobileServer_; }
  void setMobileServer(IMobileSrv* server) { mobileServer_ = server; }

  TradeService& trade() { return trade_; }
  AuthAgent& auth() { return auth_; }
  PositionMonitor& monitor() { return monitor_; }
  UiProxy& proxy() { return proxy_; }

 private:
  CodeService code_;
  TradeService trade_;
  AuthAgent auth_;
  PositionMonitor monitor_;
  UiProxy proxy_;
  std::atomic<IMobileSrv*> mobileServer_{nullptr};
};

}  // namespace orvane::terminal
