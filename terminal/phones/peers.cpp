#include "terminal/phones/peers.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orvane::terminal {

Peer& Peers::add(std::shared_ptr<Session> session) {
  Peer& peer = peers_[session.get()];
  peer.session = std::move(session);
  return peer;
}

void Peers::remove(const Session& session) {
  if (auto node = peers_.extract(&session)) logOut(node.mapped());
}

Peer* Peers::find(const Session& session) {
  const auto found = peers_.find(&session);
  return found == peers_.end() ? nullptr : &found->second;
}

void Peers::logIn(Peer& peer) {
  peer.isLoggedIn = true;
  ++loggedIn_[peer.visitor.token];
}

void Peers::logOut(Peer& peer) {
  if (!std::exchange(peer.isLoggedIn, false)) return;
  const auto count = loggedIn_.find(peer.visitor.token);
  if (--count->second == 0) loggedIn_.erase(count);
}

size_t Peers::countLoggedIn() const {
  return std::accumulate(loggedIn_.begin(), loggedIn_.end(), size_t{0},
                         [](size_t sum, const auto& entry) { return sum + entry.second; });
}

size_t Peers::countOfToken(int64_t token) const {
  return static_cast<size_t>(std::count_if(peers_.begin(), peers_.end(), [token](const auto& entry) {
    const Peer& peer = entry.second;
    return peer.visitor.token == token && !peer.session->isClosing();
  }));
}

void Peers::closeOlder(const Peer& newest) {
  if (newest.device.empty()) return;
  for (const auto& [session, peer] : peers_) {
    if (&peer == &newest || peer.device != newest.device || peer.visitor.token != newest.visitor.token) continue;
    peer.session->close(CloseCode::Replaced, "the same device has logged in anew");
  }
}

}  // namespace orvane::terminal
