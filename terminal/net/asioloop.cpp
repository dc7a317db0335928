#include "terminal/net/asioloop.h"

#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <utility>

namespace orvane::terminal {
namespace {

class AsioTimer final : public Timer {
 public:
  AsioTimer(boost::asio::io_context& context, std::chrono::milliseconds delay, IEventLoop::Work work)
      : timer_(context, delay), work_(std::make_shared<IEventLoop::Work>(std::move(work))) {
    // A handler that is already queued runs even if its timer has been destroyed, so it checks whether the work still
    // exists.
    timer_.async_wait([weak = std::weak_ptr(work_)](const boost::system::error_code& error) {
      const auto held = weak.lock();
      if (!error && held != nullptr) (*held)();
    });
  }

 private:
  boost::asio::steady_timer timer_;
  std::shared_ptr<IEventLoop::Work> work_;
};

}  // namespace

void AsioLoop::post(Work work) { boost::asio::post(context_, std::move(work)); }

std::unique_ptr<Timer> AsioLoop::after(std::chrono::milliseconds delay, Work work) {
  return std::make_unique<AsioTimer>(context_, delay, std::move(work));
}

void AsioLoop::start() {
  thread_ = std::thread([this] { context_.run(); });
}

void AsioLoop::join() {
  if (thread_.joinable()) thread_.join();
}

}  // namespace orvane::terminal
