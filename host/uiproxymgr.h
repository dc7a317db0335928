#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/account.h"
#include "host/instrument.h"
#include "host/mobilemessage.h"

namespace orvane {

// Figures of a selection of accounts for one code type; leverage and ratios are plain factors, profits and values are
// in the accounts' currency.
struct CodeTypePosition {
  std::string codeType;  // GBK
  double netAbsLever = 0;
  double totalLever = 0;
  double leverWeight = 0;
  double todayProfit = 0;
  double profitRatio = 0;
  double todayProfitType = 0;
  double todayProfitAccount = 0;
  double amassProfit = 0;
  double amassProfitType = 0;
  double amassProfitAccount = 0;
  double totalMarketValue = 0;
};

// The host's user interface, as far as a phone may reach it. Called on the worker thread.
class IUIProxyMgr {
 public:
  // Never null.
  static IUIProxyMgr* getInstance();

  virtual ~IUIProxyMgr() = default;

  // Answers a request whose topic the library does not know: fills `topic`, `message` and `data` of the reply, the
  // last two in GBK.
  virtual void requestSync(const std::string& topic, const std::string& data, MobileMessage& reply) = 0;

  // Takes such a request over: the host answers it itself, or never.
  virtual void requestAsync(int64_t requestId, const std::string& topic, const std::string& data) = 0;

  // The rate that stands in where the trade service has none; a plain factor.
  virtual double getDefaultMarginRate(const SymbolCode& symbol) = 0;

  // Fills one record for each code type that the accounts hold. The library passes true for both flags.
  virtual void getCodeTypePositions(const std::vector<TradingAccountID>& accounts, bool flag1, bool flag2,
                                    std::vector<CodeTypePosition>& positions) = 0;

  // The code type and the name of an instrument, both GBK. False where the hash code is unknown.
  virtual bool getCodeTypeName(int64_t hashCode, std::string& typeText, std::string& nameText) = 0;
};

}  // namespace orvane
