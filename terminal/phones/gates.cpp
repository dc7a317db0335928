#include "terminal/phones/gates.h"

#include <string>
#include <utility>

#include "terminal/phones/bodycheck.h"

namespace orvane::terminal {
namespace {

std::optional<Refused> refusedIf(RefusalReason reason, std::string fault) {
  if (fault.empty()) return std::nullopt;
  return Refused{reason, std::move(fault)};
}

}  // namespace

void Gates::onRequest(Peer& peer, const Frame& frame) {
  const Request request{peer, frame, findTopic(frame.topic)};
  for (const auto check : {&Gates::checkRights, &Gates::checkKeyAllowed, &Gates::checkBody, &Gates::checkCrowd}) {
    const Fault fault = (this->*check)(request);
    if (!fault) continue;
    answers_.refuse(*peer.session, frame.id, frame.topic, *fault);
    if (fault->reason == RefusalReason::Crowd) requests_.countOverrun(peer);
    return;
  }
  switch (request.topic.answerer) {
    case Answerer::Agent:
      return requests_.add(peer, frame, request.topic);
    case Answerer::QuoteWatch:
      return watch_.onRequest(*peer.session, frame);
    case Answerer::Alerts:
      return alerts_.onRequest(peer, frame);
  }
}

Gates::Fault Gates::checkRights(const Request& request) {
  const Visitor& visitor = request.peer.visitor;
  Fault fault = refusedIf(RefusalReason::Rights, findRightsFault(visitor.rights, request.topic));
  if (fault && request.topic.changesSomething()) {
    keeper_.noteRefusal(visitor, request.peer.session->address(), request.frame, fault->message);
  }
  return fault;
}

Gates::Fault Gates::checkKeyAllowed(const Request& request) {
  if (request.frame.key.empty() || request.topic.changesSomething()) return std::nullopt;
  return Refused{RefusalReason::Key, "only a request that changes something takes a key"};
}

Gates::Fault Gates::checkBody(const Request& request) {
  return refusedIf(RefusalReason::Body, findBodyFault(request.topic, request.frame.body));
}

Gates::Fault Gates::checkCrowd(const Request& request) {
  return refusedIf(RefusalReason::Crowd, requests_.crowdFault(request.peer));
}

}  // namespace orvane::terminal
