#include "terminal/phones/gates.h"

#include <string>
#include <utility>

#include "terminal/phones/bodycheck.h"

namespace orvane::terminal {

void Gates::onRequest(Peer& peer, const Frame& frame) {
  const Request request{requests_.nextId(), peer, frame, findTopic(frame.topic)};
  for (const auto check :
       {&Gates::checkRights, &Gates::checkKeyAllowed, &Gates::checkBody, &Gates::checkCrowd, &Gates::beginKey}) {
    const Passage passage = (this->*check)(request);
    if (!std::holds_alternative<Pass>(passage)) return answer(request, passage);
  }
  requests_.add(request.id, peer, frame, request.topic);
}

void Gates::answer(const Request& request, const Passage& passage) {
  Session& session = *request.peer.session;
  if (const auto* reply = std::get_if<MobileMessage>(&passage)) answers_.reply(session, request.frame.id, *reply);
  const auto* refused = std::get_if<Refused>(&passage);
  if (refused == nullptr) return;
  answers_.refuse(session, request.frame.id, request.frame.topic, *refused);
  if (refused->reason == RefusalReason::Crowd) requests_.countOverrun(request.peer);
}

Gates::Passage Gates::checkRights(const Request& request) {
  const Visitor& visitor = request.peer.visitor;
  std::string fault = findRightsFault(visitor.rights, request.topic);
  if (fault.empty()) return Pass{};
  if (request.topic.changesSomething()) {
    keeper_.noteRefusal(visitor, request.peer.session->address(), request.frame, fault);
  }
  return Refused{RefusalReason::Rights, std::move(fault)};
}

Gates::Passage Gates::checkKeyAllowed(const Request& request) {
  if (request.frame.key.empty() || request.topic.changesSomething()) return Pass{};
  return Refused{RefusalReason::Key, "only a request that changes something takes a key"};
}

Gates::Passage Gates::checkBody(const Request& request) {
  std::string fault = findBodyFault(request.topic, request.frame.body);
  if (fault.empty()) return Pass{};
  return Refused{RefusalReason::Body, std::move(fault)};
}

Gates::Passage Gates::checkCrowd(const Request& request) {
  std::string fault = requests_.crowdFault(request.peer);
  if (fault.empty()) return Pass{};
  return Refused{RefusalReason::Crowd, std::move(fault)};
}

Gates::Passage Gates::beginKey(const Request& request) {
  if (!request.topic.changesSomething()) return Pass{};
  const Peer& peer = request.peer;
  auto verdict = keeper_.begin(request.id, peer.visitor, peer.session->address(), request.frame);
  if (std::holds_alternative<ActionStore::Fresh>(verdict)) return Pass{};
  if (auto* reply = std::get_if<MobileMessage>(&verdict)) return std::move(*reply);
  if (const auto* running = std::get_if<ActionStore::Running>(&verdict)) {
    requests_.join(running->requestId, request.peer, request.frame.id);
    return Later{};
  }
  return Refused{RefusalReason::Key, std::move(std::get<ActionStore::Rejected>(verdict).message)};
}

}  // namespace orvane::terminal
