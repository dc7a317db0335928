#include "fuzz/fuzz.h"
#include "terminal/phones/bodycheck.h"

// Any topic and body, and a host in any mood. The first byte sets its levers ('@' leaves all alone), the topic goes up
// to the first line's end, the body is the rest. A gateway hands on whole JSON that passes its check; what is no JSON
// is kept back where it would still end the process.
int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace orvane;
  const std::string input(bytes, bytes + size);
  const size_t lineEnd = input.find('\n');
  if (lineEnd == std::string::npos || lineEnd == 0) return 0;
  const std::string topic = input.substr(1, lineEnd - 1);
  const std::string body = input.substr(lineEnd + 1);
  const bool isWhole = body.empty() || terminal::checkJson(body).ok;
  if (isWhole ? terminal::findBodyFault(topic, body).empty() : !fuzz::isFatal(topic, body)) {
    fuzz::FuzzHost(input[0]).ask(topic, body, (input[0] & 0x20) == 0 ? 8 : 24);
  }
  return 0;
}
