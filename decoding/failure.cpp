#include "decoding/failure.h"

namespace orvane {

ResultStatus FailureTeller::fail(const FailureTexts& texts, const SourcePlace& place) const {
  if (texts.log != nullptr && agentLogger()->isDebugEnabled()) {
    std::string line(prefix_);
    line.append(std::to_string(requestId_)).append(", Topic=").append(topicName(topic_)).append(texts.log);
    writeDebugLine(line, place);
  }
  return {-1, texts.reply};
}

}  // namespace orvane
