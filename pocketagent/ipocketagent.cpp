#include "pocketagent/ipocketagent.h"

namespace orvane {

// Out of line, so that the library exports each of them. The class has no members to copy.

IPocketAgent::IPocketAgent() = default;
IPocketAgent::IPocketAgent(const IPocketAgent& /*other*/) {}  // NOLINT(modernize-use-equals-default)
IPocketAgent::~IPocketAgent() = default;
// NOLINTNEXTLINE(modernize-use-equals-default, bugprone-unhandled-self-assignment)
IPocketAgent& IPocketAgent::operator=(const IPocketAgent& /*other*/) { return *this; }

}  // namespace orvane
