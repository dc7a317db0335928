#include "fuzz/fuzz.h"
#include "terminal/phones/bodycheck.h"

// Pushes any topic and body to a host that may fail. The first byte sets its failures ('@' is none), the topic ends at
// the first newline, the body is the rest. JSON is pushed if it passes the gateway's check, anything else unless it
// would end the process.
int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace orvane;
  const std::string input(bytes, bytes + size);
  const size_t lineEnd = input.find('\n');
  if (lineEnd == std::string::npos || lineEnd == 0) return 0;
  const std::string topic = input.substr(1, lineEnd - 1);
  const std::string body = input.substr(lineEnd + 1);
  const bool isWhole = body.empty() || terminal::checkJson(body).ok;
  if (isWhole ? terminal::findBodyFault(terminal::findTopic(topic), body).empty() : !fuzz::isFatal(topic, body)) {
    fuzz::FuzzHost(input[0]).ask(topic, body, (input[0] & 0x20) == 0 ? 8 : 24);
  }
  return 0;
}
