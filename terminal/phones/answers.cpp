#include "terminal/phones/answers.h"

#include <memory>
#include <utility>

#include "terminal/logging.h"
#include "terminal/phones/frame.h"

namespace orvane::terminal {

void Answers::reply(Session& session, std::string_view id, const MobileMessage& message) {
  send(session, writeAnswer(id, message));
}

void Answers::refuse(Session& session, std::string_view id, std::string_view topic, const Refused& refused) {
  TERMINAL_LOG(gatewayLogger(), Debug, "{}: {}", session.name(), refused.message);
  metrics_.countRefusal(refused.reason);
  send(session, writeFailure(id, topic, refused.message));
}

void Answers::send(Session& session, std::string text) {
  session.send(std::make_shared<const std::string>(std::move(text)));
}

void Answers::fail(Session& session, const char* what) {
  TERMINAL_LOG(gatewayLogger(), Error, "{}: a frame could not be processed: {}", session.name(), what);
  metrics_.countRefusal(RefusalReason::Fault);
  session.close(CloseCode::Fault, "the terminal failed inside; its log says more");
}

}  // namespace orvane::terminal
