#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/resultstatus.h"
#include "pocketagent/log.h"
#include "pocketagent/topic.h"

namespace orvane {

// What a decoder says of a fault: the text of the reply and the end of the log line. They are two texts, and often
// differ.
struct FailureTexts {
  const char* reply;
  const char* log;  // starts with ",msg="; null where the fault is not logged
};

// Tells the faults of one decoding: to the log under the decoder's prefix, to the caller as a status.
class FailureTeller {
 public:
  // `prefix` ends in "RequestID=".
  FailureTeller(std::string_view prefix, int64_t requestId, OrvMobileTopic topic)
      : prefix_(prefix), requestId_(requestId), topic_(topic) {}

  // The same request under another prefix.
  FailureTeller withPrefix(std::string_view prefix) const { return {prefix, requestId_, topic_}; }

  ResultStatus fail(const FailureTexts& texts, const SourcePlace& place = SourcePlace::current()) const;

 private:
  std::string_view prefix_;
  int64_t requestId_;
  OrvMobileTopic topic_;
};

}  // namespace orvane
