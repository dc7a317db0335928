#pragma once

#include <cstdint>

namespace orvane::test {

// What has arrived at a TCP socket so far. In a separate source: the kernel's header and Asio's exclude each other.
uint64_t receivedBytes(int socket);

}  // namespace orvane::test
