#pragma once

#include <cstdio>

#include "pocketagent/ipocketagent.h"
#include "tests/support/scriptedhost.h"

namespace orvane::test {

// One request from end to end: the reply has the host's account.
inline bool answers(IPocketAgent& agent) {
  ScriptedHost host;
  host.accounts = {account(1, "80010001")};
  agent.start({"http://127.0.0.1:1", "trader", "", "", "", ""});
  host.spi->onRequest(5, 8, "account.list", "");
  const bool sent = host.waitForSent(1);
  agent.stop();
  const bool right = sent && host.sent()[0].requestId == 5 && host.sent()[0].data.find("80010001") != std::string::npos;
  if (!right) std::fputs("no reply, or a wrong one\n", stderr);
  return right;
}

}  // namespace orvane::test
