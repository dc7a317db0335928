#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace orvane {

// One consumer thread fed through two buffers: producers lock only to insert, and the consumer runs items without a
// lock. Items run strictly in the order of their enqueue.
//
// A subclass defines `handle`, and must stop the thread in its own destructor: after that `handle` is pure again. Lock
// order: controlMutex, then queueMutex. Failures of the standard thread operations are thrown as standard system
// errors. An exception that leaves `handle` ends the process.
template <typename T>
class AsyncBufferQueueThread {
 public:
  // `itemLimit` below 1 means no limit. `idleMillis` is the length of one idle wait; 0 or less does not wait at all.
  // `endWhenIdle` ends the thread after the first idle wait without an item.
  AsyncBufferQueueThread(int32_t itemLimit, int64_t idleMillis, bool endWhenIdle)
      : maxItems(itemLimit), waitMillis(idleMillis), exitWhenIdle(endWhenIdle) {}

  AsyncBufferQueueThread(const AsyncBufferQueueThread&) = delete;
  AsyncBufferQueueThread& operator=(const AsyncBufferQueueThread&) = delete;

  // Drops waiting items.
  virtual ~AsyncBufferQueueThread() {
    const std::lock_guard control(controlMutex);
    runStopSteps(false);
  }

  // Starts the consumer unless one is running. A consumer that ended by itself is joined first. Waiting items are kept
  // for the new consumer. REQUIRES: the subclass holds controlMutex, or no other thread starts or stops this object.
  void startThread() {
    {
      const std::lock_guard queue(queueMutex);
      if (state == QueueRunning) return;
      state = QueueStopNow;
      wakeCondition.notify_one();
    }
    joinThread();
    state = QueueRunning;
    thread = std::thread([this] { run(); });
  }

  // Ends the thread and waits for it. With `drain` all waiting items run first; otherwise only the item in `handle`
  // finishes and the others are dropped. Throws the resource-deadlock error if called from within `handle`.
  virtual void stopThread(bool drain) {
    const std::lock_guard control(controlMutex);
    runStopSteps(drain);
  }

  // Drops the waiting items that the consumer has not taken over yet.
  virtual void clearQueue() {
    const std::lock_guard queue(queueMutex);
    writeBuffer->clear();
    wakeCondition.notify_one();
  }

  // Any thread, at any time. Without a consumer the item waits for the next start. Returns the number of items in the
  // write buffer, this one included. Above the limit the oldest is dropped, but still counted.
  virtual int32_t enqueue(const T& item) {
    const std::lock_guard queue(queueMutex);
    writeBuffer->push_back(item);
    const auto count = static_cast<int32_t>(writeBuffer->size());
    if (maxItems >= 1 && count > maxItems) writeBuffer->pop_front();
    // Notified under the lock, because once the item has run its owner may destroy the queue.
    wakeCondition.notify_one();
    return count;
  }

 protected:
  enum State : int32_t {
    QueueStopped = 0,   // no thread, both buffers emptied
    QueueStopNow = 1,   // the consumer ends before its next item
    QueueDraining = 2,  // the consumer ends once both buffers are empty
    QueueRunning = 3,
  };

  // Runs one item, on the consumer thread.
  virtual void handle(T& item) = 0;

  // Called by the consumer when its buffer is empty.
  virtual void swapBuffers() {
    const std::lock_guard queue(queueMutex);
    std::swap(readBuffer, writeBuffer);
  }

 public:
  // Ends an idle wait early. Public between protected operations to keep the order of the vtable.
  virtual void wakeUp() {
    const std::lock_guard queue(queueMutex);
    wakeCondition.notify_one();
  }

 protected:
  // The thread's body.
  virtual void run() {
    while (true) {
      while (!readBuffer->empty()) {
        if (state < QueueDraining) {
          return;  // the stop steps drop the rest
        }
        handle(readBuffer->front());
        readBuffer->pop_front();
      }
      if (!waitForItems()) return;
      swapBuffers();
    }
  }

  // Waits until the write buffer holds an item; false if the consumer must end.
  bool waitForItems() {
    std::unique_lock queue(queueMutex);
    while (writeBuffer->empty()) {
      if (state < QueueRunning) {
        state = QueueStopNow;
        return false;
      }
      wakeCondition.wait_until(queue, deadline());
      if (writeBuffer->empty() && exitWhenIdle) {
        state = QueueStopNow;
        return false;
      }
    }
    return true;
  }

  // REQUIRES: controlMutex held.
  void runStopSteps(bool drain) {
    state = drain ? QueueDraining : QueueStopNow;
    {
      const std::lock_guard queue(queueMutex);
      wakeCondition.notify_one();
    }
    joinThread();
    const std::lock_guard queue(queueMutex);
    writeBuffer->clear();
    readBuffer->clear();
    state = QueueStopped;
  }

  // Destroyed from the last to the first: the condition and its mutex go before the thread, which ends the process if
  // it still runs, and the items go after it.
  std::mutex controlMutex;  // serialises starts and stops
  std::deque<T> bufferA;
  std::deque<T> bufferB;
  const int32_t maxItems;
  std::thread thread;
  std::atomic<int32_t> state{QueueStopped};
  std::mutex queueMutex;  // guards the two pointers and the write buffer
  std::condition_variable wakeCondition;
  std::deque<T>* readBuffer = &bufferB;   // the consumer's
  std::deque<T>* writeBuffer = &bufferA;  // the producers'
  const int64_t waitMillis;
  const bool exitWhenIdle;

 private:
  using Clock = std::chrono::steady_clock;

  Clock::time_point deadline() const {
    constexpr int64_t kCentury = 3'155'760'000'000;  // milliseconds; a much longer wait would overflow the clock
    if (waitMillis <= 0) {
      return Clock::time_point{};  // already past
    }
    return Clock::now() + std::chrono::milliseconds{std::min(waitMillis, kCentury)};
  }

  void joinThread() {
    if (!thread.joinable()) return;
    if (thread.get_id() == std::this_thread::get_id()) {
      throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    thread.join();
  }
};

}  // namespace orvane
