#include <variant>

#include "fuzz/fuzz.h"
#include "terminal/phones/bodycheck.h"
#include "terminal/phones/frame.h"
#include "terminal/utf8.h"

namespace orvane::fuzz {
namespace {

// What goes out is JSON in UTF-8, whatever came in.
void checkFrame(const std::string& frame) { PROVE(terminal::checkJson(frame).ok && terminal::isUtf8(frame)); }

// The gateway refuses exactly the bodies that would end the process or are too long; the library answers the rest.
void onFrame(const terminal::Frame& frame) {
  const std::string body(frame.body);
  PROVE(terminal::checkJson(frame.id).ok && (body.empty() || terminal::checkJson(body).ok));
  const std::string fault = terminal::findBodyFault(terminal::findTopic(frame.topic), body);
  PROVE(fault.empty() != isFatal(frame.topic, body) || fault.find("more than 1000 elements") != std::string::npos);
  checkFrame(terminal::writeFailure(frame.id, frame.topic, fault));
  if (!fault.empty()) return;
  for (const MobileMessage& reply : FuzzHost(0).ask(frame.topic, body, frame.terminalType)) {
    checkFrame(terminal::writeAnswer(frame.id, reply));
  }
}

}  // namespace
}  // namespace orvane::fuzz

// Any bytes as a phone's frame, and as each text of a reply.
int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace orvane;
  const std::string input(bytes, bytes + size);
  const std::string tail = input.substr(size / 2);
  fuzz::checkFrame(terminal::writeAnswer("7", {1, input, tail, input, 8}));
  fuzz::checkFrame(terminal::writeAnswer("7", {1, tail, input, tail, 8}));
  const auto read = terminal::readFrame(input);
  if (const auto* frame = std::get_if<terminal::Frame>(&read)) {
    fuzz::onFrame(*frame);
  } else {
    const auto& error = std::get<terminal::FrameError>(read);
    fuzz::checkFrame(terminal::writeFailure(error.id, error.topic, error.message));
  }
  return 0;
}
