#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/account.h"
#include "host/instrument.h"
#include "host/mobilemessage.h"

namespace orvane {

// The figures of one code type over a selection of accounts, sent as they are. How each is computed, and its unit, is
// the host's.
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

// The host's user interface proxy. Worker thread only.
class IUIProxyMgr {
 public:
  // Never null.
  static IUIProxyMgr* getInstance();

  virtual ~IUIProxyMgr() = default;

  // Answers a request whose topic the library does not know. Fills `topic`, `message` and `data` of the reply, the last
  // two in GBK; the library overwrites the other fields.
  virtual void requestSync(const std::string& topic, const std::string& data, MobileMessage& reply) = 0;

  // Takes over such a request. The library sends no reply; the host may answer it by IPocketAgent::pushNotify.
  virtual void requestAsync(int64_t requestId, const std::string& topic, const std::string& data) = 0;

  // The margin rate if ITradeService::queryMarginRate fails. Cannot fail.
  virtual double getDefaultMarginRate(const SymbolCode& symbol) = 0;

  // Fills one record for each code type of the accounts, which may be none. The library passes true for both flags,
  // whose meaning is the host's.
  virtual void getCodeTypePositions(const std::vector<TradingAccountID>& accounts, bool flag1, bool flag2,
                                    std::vector<CodeTypePosition>& positions) = 0;

  // The code type and the name of an instrument, both GBK. False if the hash code is unknown; the texts are then
  // ignored.
  virtual bool getCodeTypeName(int64_t hashCode, std::string& typeText, std::string& nameText) = 0;
};

}  // namespace orvane
