#!/usr/bin/env bash
# Usage: exports.sh LIBRARY. The library offers IPocketAgent and nothing else, and wants of us only the host's symbols.
set -euo pipefail

offered=$(nm -D --defined-only --demangle "$1" | sed 's/^[^ ]* . //' | sort -u)
expected=$(sort <<'NAMES'
orvane::IPocketAgent::IPocketAgent()
orvane::IPocketAgent::IPocketAgent(orvane::IPocketAgent const&)
orvane::IPocketAgent::getInstance()
orvane::IPocketAgent::operator=(orvane::IPocketAgent const&)
orvane::IPocketAgent::~IPocketAgent()
typeinfo for orvane::IPocketAgent
typeinfo name for orvane::IPocketAgent
vtable for orvane::IPocketAgent
NAMES
)
diff <(echo "$expected") <(echo "$offered")

wanted=$(nm -D --undefined-only --demangle "$1" | sed -nE 's/^ *U (orvane::[A-Za-z0-9_:]+).*/\1/p' | sort -u)
host=$(sort <<'NAMES'
orvane::CodeConvert::gbk_to_utf8
orvane::CodeConvert::utf8_to_gbk
orvane::IAuthAgent::getInstance
orvane::IPositionMonitor::getInstance
orvane::IServiceRouter::instance
orvane::IUIProxyMgr::getInstance
orvane::Timestamp::now
orvane::Timestamp::toISO8601String
orvane::TradeUtils::getAllFill
orvane::TradeUtils::getAllOrder
orvane::TradeUtils::getAllPosition
orvane::TradeUtils::getAllTradingAccount
orvane::TradeUtils::getTradingAccountID
orvane::gBaseInformationMap
orvane::isTimeEnabled
NAMES
)
diff <(echo "$host") <(echo "$wanted")
