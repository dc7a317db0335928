#include "terminal/trading/tradinghost.h"

#include <utility>

#include "terminal/trading/quotefeed.h"
#include "terminal/trading/services.h"

namespace orvane::terminal {

struct TradingHost::Parts {
  explicit Parts(const TradingOptions& options)
      : desk(options.dataDir), engine(desk), services(desk, engine, options.quotes), feed(desk, engine, options) {}

  Desk desk;
  Engine engine;
  Services services;
  QuoteFeed feed;
};

TradingHost::TradingHost(const TradingOptions& options) : parts_(std::make_unique<Parts>(options)) {}

TradingHost::~TradingHost() { stop(); }

void TradingHost::setMobileServer(IMobileSrv* server) { parts_->services.setMobileServer(server); }

void TradingHost::start(Notify notify) {
  parts_->desk.outbox().start(std::move(notify));
  parts_->feed.start();
}

void TradingHost::stop() {
  parts_->feed.stop();
  parts_->desk.outbox().stop();
}

TradingHealth TradingHost::health() const { return {parts_->desk.isStoring(), parts_->feed.age()}; }

}  // namespace orvane::terminal
