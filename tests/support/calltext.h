#pragma once

#include <algorithm>
#include <concepts>
#include <ranges>
#include <string>
#include <tuple>
#include <utility>

#include "tests/support/scriptedhost.h"

// The arguments of a call as `ScriptedHost::calls()` shows them.
namespace orvane::test {

inline const TradingAccountID& accountOf(const TradingAccount& record) { return record.id; }
inline const TradingAccountID& accountOf(const auto& record) { return record.account; }
inline const SymbolCode& codeOf(const std::pair<const int64_t, SymbolCode>& entry) { return entry.second; }
inline const SymbolCode& codeOf(const auto& record) { return record.code; }

inline auto fields(const TradingAccountID& id) {
  return std::tie(id.index, id.reserved2, id.reserved5, id.userCode, id.reserved8, id.marketType, id.aimType,
                  id.reserved11, id.reserved12);
}
inline auto fields(const SymbolCode& it) { return std::tie(it.hashCode, it.codeClass, it.exchangeId, it.code); }

inline std::string text(const std::string& value) { return value; }
inline std::string text(std::integral auto value) { return std::to_string(value); }
inline std::string text(std::floating_point auto value) { return std::to_string(value); }
inline std::string text(AccountPrivilege value) {
  return value == AccountPrivilege::TriggerOrder ? "trigger" : "ordinary";
}

// The number of a record, and its name unless it is, whole, a record of one of the lists.
template <typename Record, typename... Lists>
std::string marked(int64_t number, const std::string& name, const Record& same, const Lists&... lists) {
  return text(number) + ((std::ranges::any_of(lists, same) || ...) ? "" : "!" + name);
}
inline std::string text(const TradingAccountID& account) {
  const ScriptedHost& host = ScriptedHost::current();
  const auto same = [&](const auto& record) { return fields(accountOf(record)) == fields(account); };
  return marked(account.index, account.userCode, same, host.accounts, host.positions, host.orders, host.fills);
}
inline std::string text(const SymbolCode& code) {
  const ScriptedHost& host = ScriptedHost::current();
  const auto same = [&](const auto& record) { return fields(codeOf(record)) == fields(code); };
  return marked(code.hashCode, code.code, same, host.symbols, host.positions, host.orders, host.fills);
}

inline std::string text(const PositionFigures& it);
template <typename... Values>
std::string joined(const Values&... values) {
  std::string list;
  ((list += (list.empty() ? "" : " ") + text(values)), ...);
  return list;
}
inline std::string text(const Source& it) { return joined(it.sourceFlags, it.sourceText + it.reserved3); }
inline std::string text(const PositionFigures& it) { return joined(it.netPos, it.longPos, it.shortPos, it.netLever); }
inline std::string text(const MonitorSyncOrder& it) {
  return joined(it.account, it.code, it.volume, it.price, it.side, it.combOffsetFlag, it.position);
}
inline std::string text(const MonitorManualPosition& it) {
  return joined(it.account, it.code, it.position, it.reserved4[0], it.reserved4[1]);
}
inline std::string text(const MonitorAccountCodes::value_type& entry);
inline std::string text(const std::ranges::range auto& items) {
  std::string joined;
  for (const auto& item : items) joined += (joined.empty() ? "" : ",") + text(item);
  return "[" + joined + "]";
}
inline std::string text(const MonitorAccountCodes::value_type& entry) {
  return text(entry.first) + ":" + text(entry.second);
}

}  // namespace orvane::test
