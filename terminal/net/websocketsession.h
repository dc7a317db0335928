#pragma once

#include <memory>

#include "terminal/net/compression.h"
#include "terminal/net/connection.h"

namespace orvane::terminal {

// Accepts the upgrade that `request` asks for, and is a session of `sessions` from then on. `sessions`, `owner` and
// `memory` must outlive it.
std::shared_ptr<Connection> openWebSocket(std::unique_ptr<SecureStream> stream, UpgradeRequest request, Remote remote,
                                          ISessionOwner& sessions, IConnectionOwner& owner, CompressionMemory& memory,
                                          const NetLimits& limits);

}  // namespace orvane::terminal
