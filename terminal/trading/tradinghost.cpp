#include "terminal/trading/tradinghost.h"

#include <utility>

#include "terminal/trading/quotefeed.h"
#include "terminal/trading/recorder.h"
#include "terminal/trading/services.h"

namespace orvane::terminal {

struct TradingHost::Parts {
  Parts(const TradingOptions& options, const IClock& clock)
      : desk(options.dataDir, clock),
        engine(desk),
        services(desk, engine, curves, options.quotes),
        feed(desk, engine, options),
        recorder(desk, curves) {}

  Desk desk;
  QuoteCurves curves;
  Engine engine;
  Services services;
  QuoteFeed feed;
  Recorder recorder;
};

TradingHost::TradingHost(const TradingOptions& options, const IClock& clock)
    : parts_(std::make_unique<Parts>(options, clock)) {}

TradingHost::~TradingHost() { stop(); }

void TradingHost::setMobileServer(IMobileSrv* server) { parts_->services.setMobileServer(server); }

void TradingHost::start(Notify notify) {
  parts_->desk.outbox().start(std::move(notify));
  parts_->recorder.start();
  parts_->feed.start();
}

void TradingHost::stop() {
  parts_->feed.stop();
  parts_->recorder.stop();
  parts_->desk.outbox().stop();
}

void TradingHost::whenStored(std::function<void(const std::string& failure)> answer) {
  parts_->desk.whenStored(std::move(answer));
}

const ILivePrices& TradingHost::prices() const { return parts_->desk.prices(); }

TradingHealth TradingHost::health() const {
  return {parts_->desk.storageFault(), parts_->desk.clockFault(), parts_->feed.age()};
}

}  // namespace orvane::terminal
