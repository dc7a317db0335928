#pragma once

#include <cstdint>
#include <string_view>

#include "host/resultstatus.h"
#include "pocketagent/log.h"
#include "pocketagent/topic.h"

namespace orvane {

// The two texts of one decoding error. They often differ.
struct FailureTexts {
  const char* reply;
  const char* log;  // starts with ",msg="; null if the error is not logged
};

// Logs an error of one decoder, under the decoder's prefix and source location, and returns its status.
class FailureReporter {
 public:
  // `prefix` ends in "RequestID=". `location` is the decoder's own, taken at its entry, whichever function finds the
  // error.
  FailureReporter(std::string_view prefix, int64_t requestId, OrvMobileTopic topic, const LogLocation& location)
      : prefix_(prefix), requestId_(requestId), topic_(topic), location_(location) {}

  // The same request and decoder under another prefix.
  FailureReporter withPrefix(std::string_view prefix) const { return {prefix, requestId_, topic_, location_}; }

  ResultStatus fail(const FailureTexts& texts) const;

 private:
  std::string_view prefix_;
  int64_t requestId_;
  OrvMobileTopic topic_;
  LogLocation location_;
};

}  // namespace orvane
