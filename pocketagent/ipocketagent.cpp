#include "pocketagent/ipocketagent.h"

namespace orvane {

// Out of line, so that each is a symbol of the library. The class holds nothing to copy.

IPocketAgent::IPocketAgent() = default;
IPocketAgent::IPocketAgent(const IPocketAgent& /*other*/) {}  // NOLINT(modernize-use-equals-default)
IPocketAgent::~IPocketAgent() = default;
// NOLINTNEXTLINE(modernize-use-equals-default, bugprone-unhandled-self-assignment)
IPocketAgent& IPocketAgent::operator=(const IPocketAgent& /*other*/) { return *this; }

}  // namespace orvane
