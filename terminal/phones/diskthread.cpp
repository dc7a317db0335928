#include "terminal/phones/diskthread.h"

namespace orvane::terminal {

void DiskThread::start() {
  thread_ = std::thread([this] {
    while (!isStopping_) store_.wait(store_.turn());
    store_.close();
  });
}

void DiskThread::stop() {
  if (!thread_.joinable()) return;
  isStopping_ = true;
  store_.hurry();
  store_.readTokens([](const std::string&) {});  // wakes it
  thread_.join();
}

}  // namespace orvane::terminal
