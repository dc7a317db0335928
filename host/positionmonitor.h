#pragma once

#include <array>
#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// One family of positions, in the host's units.
struct PositionFigures {
  int64_t netPos = 0;
  int64_t longPos = 0;
  int64_t shortPos = 0;
  double netLever = 0;
};

// One account and instrument in the monitor. The host computes all families, differences and flags.
struct PositionMonitorRecord {
  TradingAccountID account;
  SymbolCode code;
  PositionFigures system;
  PositionFigures strategyActive;
  PositionFigures reserved5;
  PositionFigures strategyUnsend;
  std::list<std::string> reserved7;
  PositionFigures accountPos;
  PositionFigures algo;
  PositionFigures manual;
  int64_t theoryPosDif = 0;
  int64_t longPosDif = 0;
  int64_t shortPosDif = 0;
  uint8_t isMatchTheory = 0;  // the four flags: any value but 0 is true
  uint8_t isMatchLongShort = 0;
  uint8_t isMatchNetPos = 0;
  uint8_t isMatchPosDif = 0;
  int32_t syncRule = 0;  // a key of syncRuleNames in vocabulary/names.h
  std::array<int64_t, 2> reserved19{};
};

// The library reads only `records`.
struct MonitorSnapshot {
  std::list<PositionMonitorRecord> records;
  std::array<PositionFigures, 5> reserved2{};
};

// A synchronising order, both from the monitor and back to it for placing. `side` is a value of sideNames,
// `combOffsetFlag` of offsetNames in vocabulary/names.h.
struct MonitorSyncOrder {
  TradingAccountID account;
  SymbolCode code;
  int64_t volume = 0;
  double price = 0;
  int32_t side = 0;
  int32_t combOffsetFlag = 0;
  PositionFigures position;
};

// One manual position. Of `position` only longPos and shortPos are used.
struct MonitorManualPosition {
  TradingAccountID account;
  SymbolCode code;
  PositionFigures position;
  std::array<int64_t, 2> reserved4{};
};

struct LessByIndex {
  bool operator()(const TradingAccountID& a, const TradingAccountID& b) const { return a.index < b.index; }
};

struct LessByHashCode {
  bool operator()(const SymbolCode& a, const SymbolCode& b) const { return a.hashCode < b.hashCode; }
};

// Accounts in ascending index, each with its instruments in ascending hash code.
using MonitorAccountCodes = std::map<TradingAccountID, std::set<SymbolCode, LessByHashCode>, LessByIndex>;

// The host's position monitor. Worker thread only. No operation reports a failure.
class IPositionMonitor {
 public:
  // Never null.
  static IPositionMonitor* getInstance();

  virtual ~IPositionMonitor() = default;

  // The orders that would synchronise the accounts and instruments in `codes`. Also called with an empty map, if a
  // request names nothing or nothing known; the host decides what that means.
  virtual std::list<MonitorSyncOrder> getSyncOrders(const MonitorAccountCodes& codes) = 0;

  // Places the orders. The list may be empty. All values but the account and the instrument are the client's,
  // unchecked.
  virtual void placeSyncOrders(std::list<MonitorSyncOrder>& orders) = 0;

  // Fills `records`.
  virtual void getMonitorRecords(MonitorSnapshot& snapshot) = 0;

  // Clears manual positions. The map is empty if the request names nothing; the host decides what that means.
  virtual void cleanManualPositions(const MonitorAccountCodes& codes) = 0;

  // Stores longPos and shortPos of each record. The list may be empty. Both values are the client's, unchecked.
  virtual void updateManualPositions(std::list<MonitorManualPosition>& positions) = 0;

  // Appends the manual positions to the list. The map is empty if the request names nothing.
  virtual void getManualPositions(const MonitorAccountCodes& codes, std::list<MonitorManualPosition>& positions) = 0;
};

}  // namespace orvane
