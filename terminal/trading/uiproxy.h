#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/uiproxymgr.h"
#include "terminal/trading/engine.h"
#include "terminal/trading/quotecurves.h"
#include "terminal/trading/tradingoptions.h"

namespace orvane::terminal {

// Answers the terminal's own topics, which docs/topics.md describes. Thread-safe. "equity.list" is the only one that
// reads the disk: requestSync() waits for it.
class UiProxy : public IUIProxyMgr {
 public:
  UiProxy(Desk& desk, Engine& engine, const QuoteCurves& curves, QuoteMode mode)
      : desk_(desk), engine_(engine), curves_(curves), mode_(mode) {}

  // The names of the terminal's own topics.
  static std::vector<std::string_view> topics();

  void requestSync(const std::string& topic, const std::string& data, MobileMessage& reply) override;
  void requestAsync(int64_t requestId, const std::string& topic, const std::string& data) override;
  double getDefaultMarginRate(const SymbolCode& symbol) override;
  void getCodeTypePositions(const std::vector<TradingAccountID>& accounts, bool flag1, bool flag2,
                            std::vector<CodeTypePosition>& positions) override;
  bool getCodeTypeName(int64_t hashCode, std::string& typeText, std::string& nameText) override;

 private:
  // The two texts of a reply, UTF-8.
  struct Answer {
    std::string message;
    std::string data;
  };
  struct Topic {
    std::string_view name;
    Answer (*answer)(UiProxy& proxy, const std::string& body);
  };
  static const std::array<Topic, 6> kTopics;

  Answer answer(const std::string& topic, const std::string& body);
  std::string terminalInfo();
  std::string quoteList();
  Answer rates(const std::string& body);
  std::string setQuote(const std::string& body);
  Answer equityList(const std::string& body);

  // Calls `deliver` once, here or on the committer's thread, which may be after the proxy's end.
  void readEquity(const std::string& body, std::function<void(const Answer&)> deliver);

  static void put(const Answer& made, MobileMessage& reply);

  Desk& desk_;
  Engine& engine_;
  const QuoteCurves& curves_;
  QuoteMode mode_;
};

}  // namespace orvane::terminal
