#include "tests/system/socketbytes.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace orvane::test {

uint64_t receivedBytes(int socket) {
  tcp_info info{};
  socklen_t size = sizeof(info);
  getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size);
  return info.tcpi_bytes_received;
}

}  // namespace orvane::test
