#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string_view>

#include "terminal/session.h"

namespace orvane::terminal::relay {

// Bytes of a session that may be under way in one direction: enough for 5 MB/s at a round trip of 50 ms.
inline constexpr size_t kWindowBytes = size_t{256} * 1024;
// Smaller than any server's limit of a message, and small enough that others get their turn.
inline constexpr size_t kMaxPieceBytes = size_t{64} * 1024;

// The sender's side of one direction of a session: the frames that wait, cut into pieces for which there is credit.
class SendWindow {
 public:
  struct Piece {
    std::string_view bytes;
    bool isLast = true;  // of its frame
  };

  void add(Session::Text text);

  // The next piece that may be sent; valid until the next operation. Empty without credit or frames.
  std::optional<Piece> next();

  // Takes the credit for a whole frame that does not have to wait. False if it has to.
  bool takeWhole(size_t bytes);

  // The peer is untrusted: credit never exceeds a window.
  void grant(uint32_t bytes);

  bool isEmpty() const { return frames_.empty(); }
  size_t queuedBytes() const { return queuedBytes_; }
  size_t waitingBytes() const;  // behind the frame that is being sent

  // Gives up all frames but the one that is being sent.
  void keepFirst();
  void clear();

 private:
  std::deque<Session::Text> frames_;
  Session::Text ended_;  // keeps the bytes of the last piece
  size_t sent_ = 0;      // of the first frame
  size_t queuedBytes_ = 0;
  size_t credit_ = kWindowBytes;
};

// The receiver's side.
class ReceiveWindow {
 public:
  // Bytes have come. False if the sender had no credit for them.
  bool take(size_t bytes);

  // They need no room any more. Returns the credit to send now; 0 if it can wait.
  uint32_t release(size_t bytes);

 private:
  size_t held_ = 0;      // received and not released
  size_t released_ = 0;  // not returned to the sender yet
};

}  // namespace orvane::terminal::relay
