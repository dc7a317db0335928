#include "terminal/relay/window.h"

#include <algorithm>
#include <utility>

namespace orvane::terminal::relay {

void SendWindow::add(Session::Text text) {
  queuedBytes_ += text->size();
  frames_.push_back(std::move(text));
}

std::optional<SendWindow::Piece> SendWindow::next() {
  if (frames_.empty()) return std::nullopt;
  const std::string_view rest = std::string_view(*frames_.front()).substr(sent_);
  const size_t size = std::min({rest.size(), credit_, kMaxPieceBytes});
  if (size == 0 && !rest.empty()) return std::nullopt;
  credit_ -= size;
  queuedBytes_ -= size;
  sent_ += size;
  const Piece piece{rest.substr(0, size), size == rest.size()};
  if (piece.isLast) {
    ended_ = std::move(frames_.front());
    frames_.pop_front();
    sent_ = 0;
  }
  return piece;
}

bool SendWindow::takeWhole(size_t bytes) {
  if (!frames_.empty() || bytes > credit_ || bytes > kMaxPieceBytes) return false;
  credit_ -= bytes;
  return true;
}

void SendWindow::grant(uint32_t bytes) { credit_ = std::min(credit_ + bytes, kWindowBytes); }

size_t SendWindow::waitingBytes() const {
  return frames_.empty() ? 0 : queuedBytes_ - (frames_.front()->size() - sent_);
}

void SendWindow::keepFirst() {
  queuedBytes_ -= waitingBytes();
  if (!frames_.empty()) frames_.resize(1);
}

void SendWindow::clear() {
  frames_.clear();
  sent_ = 0;
  queuedBytes_ = 0;
}

bool ReceiveWindow::take(size_t bytes) {
  held_ += bytes;
  return held_ + released_ <= kWindowBytes;
}

uint32_t ReceiveWindow::release(size_t bytes) {
  held_ -= bytes;
  released_ += bytes;
  return released_ < kWindowBytes / 4 ? 0 : static_cast<uint32_t>(std::exchange(released_, 0));
}

}  // namespace orvane::terminal::relay
