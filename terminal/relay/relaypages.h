#pragma once

#include <functional>

#include "terminal/pages.h"
#include "terminal/relay/switchboard.h"

namespace orvane::terminal::relay {

// `/health`, `/health/live`, `/health/ready` and, for this machine alone, `/metrics` of a relay. One thread.
class RelayPages : public IPageOwner {
 public:
  using FiguresProbe = std::function<TransportFigures()>;

  RelayPages(const Switchboard& board, FiguresProbe figures) : board_(board), figures_(std::move(figures)) {}

  void makePage(const HttpRequest& request, Answer answer) override;

 private:
  Page health() const;
  Page metrics() const;

  const Switchboard& board_;
  const FiguresProbe figures_;
};

}  // namespace orvane::terminal::relay
