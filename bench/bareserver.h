#pragma once

#include <string>

namespace orvane::bench {

// The sockets' yardstick: a WebSocket server with Beast's defaults, on one thread, that answers every message with
// `reply`. Prints its address as the terminal does and runs until the process is killed.
[[noreturn]] void runBareServer(const std::string& reply);

}  // namespace orvane::bench
