#pragma once

#include <boost/asio/io_context.hpp>
#include <thread>

#include "terminal/eventloop.h"

namespace orvane::terminal {

// The event loop of sockets, and the thread that runs it. May be started and joined once.
class AsioLoop : public IEventLoop {
 public:
  AsioLoop() = default;
  ~AsioLoop() override { join(); }
  AsioLoop(const AsioLoop&) = delete;
  AsioLoop& operator=(const AsioLoop&) = delete;

  void post(Work work) override;
  std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Work work) override;
  WallTime wallTime() const override { return systemClock().wallTime(); }
  BootTime bootTime() const override { return systemClock().bootTime(); }

  // For sockets.
  boost::asio::io_context& context() { return context_; }

  void start();
  bool isStarted() const { return thread_.joinable(); }

  // Waits until no socket and no timer is left.
  void join();

 private:
  boost::asio::io_context context_{1};
  std::thread thread_;
};

}  // namespace orvane::terminal
