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
