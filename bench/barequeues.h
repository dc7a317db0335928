#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace orvane::bench {

// A consumer thread that takes all waiting items by swapping two deques, and that wakes each millisecond as the
// library's does. The hand-off figure, whose yardstick simply waits, shows the cost of that. Drains before it ends.
template <typename T>
class SwapQueue {
 public:
  explicit SwapQueue(std::function<void(T&)> handle) : handle_(std::move(handle)), thread_([this] { run(); }) {}
  ~SwapQueue() {
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
    }
    wake_.notify_one();
    thread_.join();
  }

  void enqueue(const T& item) {
    {
      const std::lock_guard lock(mutex_);
      items_.push_back(item);
    }
    wake_.notify_one();
  }

 private:
  void run() {
    std::deque<T> batch;
    while (true) {
      {
        std::unique_lock lock(mutex_);
        while (!wake_.wait_for(lock, std::chrono::milliseconds(1), [this] { return !items_.empty() || ended_; })) {
        }
        batch.swap(items_);
      }
      if (batch.empty()) return;
      for (; !batch.empty(); batch.pop_front()) handle_(batch.front());
    }
  }

  std::function<void(T&)> handle_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<T> items_;
  bool ended_ = false;
  std::thread thread_;
};

// A consumer thread that takes one item at a time under the lock. Drains before it ends.
template <typename T>
class PopQueue {
 public:
  explicit PopQueue(std::function<void(T&)> handle) : handle_(std::move(handle)), thread_([this] { run(); }) {}
  ~PopQueue() {
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
    }
    wake_.notify_one();
    thread_.join();
  }

  void enqueue(const T& item) {
    {
      const std::lock_guard lock(mutex_);
      items_.push_back(item);
    }
    wake_.notify_one();
  }

 private:
  void run() {
    while (true) {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [this] { return !items_.empty() || ended_; });
      if (items_.empty()) return;
      T item = std::move(items_.front());
      items_.pop_front();
      lock.unlock();
      handle_(item);
    }
  }

  std::function<void(T&)> handle_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<T> items_;
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace orvane::bench
