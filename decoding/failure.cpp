#include "decoding/failure.h"

#include <string>

namespace orvane {

ResultStatus FailureReporter::fail(const FailureTexts& texts) const {
  if (texts.log != nullptr && agentLogger()->isDebugEnabled()) {
    std::string line(prefix_);
    line.append(std::to_string(requestId_)).append(", Topic=").append(topicName(topic_)).append(texts.log);
    writeDebugLine(line, location_);
  }
  return {-1, texts.reply};
}

}  // namespace orvane
