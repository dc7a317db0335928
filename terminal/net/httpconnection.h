#pragma once

#include <memory>

#include "terminal/net/connection.h"

namespace orvane::terminal {

// Starts the handshake of TLS, if there is TLS, and reads the head of one HTTP request. `owner` must outlive the
// connection.
std::shared_ptr<Connection> openHttpConnection(std::unique_ptr<SecureStream> stream, Remote remote,
                                               IConnectionOwner& owner, const NetLimits& limits);

}  // namespace orvane::terminal
