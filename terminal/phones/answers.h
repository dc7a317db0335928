#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "host/mobilemessage.h"
#include "terminal/phones/metrics.h"
#include "terminal/session.h"

namespace orvane::terminal {

// Why something is not done, for the metrics and, in UTF-8, for the client.
struct Refused {
  RefusalReason reason = RefusalReason::Fault;
  std::string message;
};

// The one place that answers frames. `id` is the frame's own, as JSON text.
class Answers {
 public:
  explicit Answers(Metrics& metrics) : metrics_(metrics) {}

  void reply(Session& session, std::string_view id, const MobileMessage& message);
  void refuse(Session& session, std::string_view id, std::string_view topic, const Refused& refused);
  void send(Session& session, std::string text);

  // Runs `work`. If it throws, closes the session, so that the client does not wait for an answer forever.
  template <typename Work>
  void guard(Session& session, const Work& work) try {
    work();
  } catch (const std::exception& error) {
    fail(session, error.what());
  }

 private:
  void fail(Session& session, const char* what);

  Metrics& metrics_;
};

}  // namespace orvane::terminal
