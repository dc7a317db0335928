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

// One family of positions, in the instrument's units.
struct PositionFigures {
  int64_t netPos = 0;
  int64_t longPos = 0;
  int64_t shortPos = 0;
  double netLever = 0;  // plain factor
};

// One account and instrument as the monitor sees it. The host computes the families, the differences and the flags.
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
  uint8_t isMatchTheory = 0;  // flags: 0 is false, anything else true
  uint8_t isMatchLongShort = 0;
  uint8_t isMatchNetPos = 0;
  uint8_t isMatchPosDif = 0;
  int32_t syncRule = 0;  // 0 long and short apart, 1 and 3 opening and closing convert, 2 net position
  std::array<int64_t, 2> reserved19{};
};

struct MonitorSnapshot {
  std::list<PositionMonitorRecord> records;
  std::array<PositionFigures, 5> reserved2{};
};

// One synchronising order, from the monitor or back to it for placing. `side` and `combOffsetFlag` carry the numbers of
// vocabulary/names.h.
struct MonitorSyncOrder {
  TradingAccountID account;
  SymbolCode code;
  int64_t volume = 0;
  double price = 0;
  int32_t side = 0;
  int32_t combOffsetFlag = 0;
  PositionFigures position;
};

// One manual position; only longPos and shortPos of `position` are used.
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

// Instruments of accounts, each account and each instrument at most once.
using MonitorAccountCodes = std::map<TradingAccountID, std::set<SymbolCode, LessByHashCode>, LessByIndex>;

// The host's position monitor. Called on the worker thread; no operation reports a failure.
class IPositionMonitor {
 public:
  // Never null.
  static IPositionMonitor* getInstance();

  virtual ~IPositionMonitor() = default;

  // The orders that would close the differences of what `codes` names. Called with an empty map too, where a request
  // named nothing or nothing that exists: what it means is the host's.
  virtual std::list<MonitorSyncOrder> getSyncOrders(const MonitorAccountCodes& codes) = 0;

  // Takes the orders for placing; the list may be empty. Values are the phone's own, unchecked.
  virtual void placeSyncOrders(std::list<MonitorSyncOrder>& orders) = 0;

  // Fills the snapshot's list with finished figures.
  virtual void getMonitorRecords(MonitorSnapshot& snapshot) = 0;

  // Clears manual positions; the map is empty where the request named nothing.
  virtual void cleanManualPositions(const MonitorAccountCodes& codes) = 0;

  // Stores longPos and shortPos of each record; the list may be empty. Values are the phone's own, unchecked.
  virtual void updateManualPositions(std::list<MonitorManualPosition>& positions) = 0;

  // Appends the manual positions; the map is empty where the request named nothing.
  virtual void getManualPositions(const MonitorAccountCodes& codes, std::list<MonitorManualPosition>& positions) = 0;
};

}  // namespace orvane
