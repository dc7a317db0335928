#pragma once

#include <string>

#include "host/uiproxymgr.h"
#include "terminal/trading/engine.h"
#include "terminal/trading/tradinghost.h"

namespace orvane::terminal {

// The topics that the terminal answers itself: "terminal.info", "quote.list", and "quote.set" where prices stand still.
class UiProxy : public IUIProxyMgr {
 public:
  UiProxy(Desk& desk, Engine& engine, QuoteMode mode) : desk_(desk), engine_(engine), mode_(mode) {}

  void requestSync(const std::string& topic, const std::string& data, MobileMessage& reply) override;
  void requestAsync(int64_t requestId, const std::string& topic, const std::string& data) override;
  double getDefaultMarginRate(const SymbolCode& symbol) override;
  void getCodeTypePositions(const std::vector<TradingAccountID>& accounts, bool flag1, bool flag2,
                            std::vector<CodeTypePosition>& positions) override;
  bool getCodeTypeName(int64_t hashCode, std::string& typeText, std::string& nameText) override;

 private:
  void answer(const std::string& topic, const std::string& body, std::string& message, std::string& data);
  std::string terminalInfo();
  std::string quoteList();
  std::string setQuote(const std::string& body);

  Desk& desk_;
  Engine& engine_;
  QuoteMode mode_;
};

}  // namespace orvane::terminal
