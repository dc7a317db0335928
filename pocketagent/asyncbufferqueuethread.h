#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace orvane {

// One consumer thread fed through two buffers: producers lock only for an insert, and the consumer runs its items with
// no lock held. Items run strictly in the order of their enqueue.
//
// A subclass says in `handle` what an item means, and must stop the thread in its own destructor: once that has run,
// `handle` is pure again. Lock order: controlMutex, then queueMutex. Failures of the standard thread operations pass
// through as the standard system errors; an exception leaving `handle` ends the process.
template <typename T>
class AsyncBufferQueueThread {
 public:
  // `itemLimit` below 1 means no limit. `idleMillis` is the length of one idle wait; 0 and below do not wait at all.
  // `endWhenIdle` ends the thread at the first idle wait that brings nothing.
  AsyncBufferQueueThread(int32_t itemLimit, int64_t idleMillis, bool endWhenIdle)
      : maxItems(itemLimit), waitMillis(idleMillis), exitWhenIdle(endWhenIdle) {}

  AsyncBufferQueueThread(const AsyncBufferQueueThread&) = delete;
  AsyncBufferQueueThread& operator=(const AsyncBufferQueueThread&) = delete;

  // Drops what waits.
  virtual ~AsyncBufferQueueThread() {
    const std::lock_guard control(controlMutex);
    runStopSteps(false);
  }

  // Starts the consumer, collecting one that has ended on its own first; a running one stays. What waits is kept, and
  // the new consumer runs it. REQUIRES: the subclass holds controlMutex, or no other thread starts or stops this
  // object.
  void startThread() {
    {
      const std::lock_guard queue(queueMutex);
      if (state == QueueRunning) {
        return;
      }
      state.exchange(QueueStopNow);
      wakeCondition.notify_one();
    }
    joinThread();
    state.exchange(QueueRunning);
    thread = std::thread([this] { run(); });
  }

  // Ends the thread and waits for it. With `drain` all that waits runs first, otherwise only the item in `handle`
  // finishes and the others are dropped. Called from within `handle` it raises the resource-deadlock error.
  virtual void stopThread(bool drain) {
    const std::lock_guard control(controlMutex);
    runStopSteps(drain);
  }

  // Drops what waits and has not been taken over by the consumer yet.
  virtual void clearQueue() {
    const std::lock_guard queue(queueMutex);
    writeBuffer->clear();
    wakeCondition.notify_one();
  }

  // Any thread, at any time, also while no consumer runs: the item then waits for the next start. Returns the number of
  // items waiting with this one; above the limit the oldest of them is dropped, and the number counts it still.
  virtual int32_t enqueue(const T& item) {
    const std::lock_guard queue(queueMutex);
    writeBuffer->push_back(item);
    const auto count = static_cast<int32_t>(writeBuffer->size());
    if (maxItems >= 1 && count > maxItems) {
      writeBuffer->pop_front();
    }
    // Under the lock: whoever has seen the item run may destroy the queue.
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

  virtual void swapBuffers() {
    const std::lock_guard queue(queueMutex);
    std::swap(readBuffer, writeBuffer);
  }

 public:
  virtual void wakeUp() {
    const std::lock_guard queue(queueMutex);
    wakeCondition.notify_one();
  }

 protected:
  // The thread's body.
  virtual void run() {
    while (true) {
      std::deque<T>& batch = *readBuffer;
      while (!batch.empty()) {
        if (state < QueueDraining) {
          return;
        }
        handle(batch.front());
        batch.pop_front();
      }
      letBatchGrow();
      if (!waitForItems()) {
        return;
      }
      swapBuffers();
    }
  }

  // The steps of a stop. REQUIRES: controlMutex held.
  void runStopSteps(bool drain) {
    state.exchange(drain ? QueueDraining : QueueStopNow);
    {
      const std::lock_guard queue(queueMutex);
      wakeCondition.notify_one();
    }
    joinThread();
    const std::lock_guard queue(queueMutex);
    writeBuffer->clear();
    readBuffer->clear();
    state.exchange(QueueStopped);
  }

 private:
  using Clock = std::chrono::steady_clock;

  // Keeps off the lock for a moment: without it, a consumer as fast as its producers takes the lock for each item, and
  // all of them wait for the lock more than they work.
  static void letBatchGrow() {
    const Clock::time_point end = Clock::now() + std::chrono::microseconds(4);
    while (Clock::now() < end) {
    }
  }

  // Waits until there is something to take over; false where the consumer is to end.
  bool waitForItems() {
    std::unique_lock queue(queueMutex);
    while (writeBuffer->empty()) {
      if (state < QueueRunning) {
        state.exchange(QueueStopNow);
        return false;
      }
      wakeCondition.wait_until(queue, deadline());
      if (writeBuffer->empty() && exitWhenIdle) {
        state.exchange(QueueStopNow);
        return false;
      }
    }
    return true;
  }

  Clock::time_point deadline() const {
    constexpr int64_t kCentury = 3'155'760'000'000;  // milliseconds; a longer wait would overflow the sum
    if (waitMillis <= 0) {
      return Clock::time_point{};  // past already
    }
    return Clock::now() + std::chrono::milliseconds{std::min(waitMillis, kCentury)};
  }

  void joinThread() {
    if (!thread.joinable()) {
      return;
    }
    if (thread.get_id() == std::this_thread::get_id()) {
      throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    thread.join();
  }

 protected:
  std::mutex controlMutex;  // orders starts and stops against each other

 private:
  // What the consumer writes for each item shares no cache line with what the producers write.
  static constexpr size_t kCacheLine = 64;

  alignas(kCacheLine) std::deque<T> bufferA;
  alignas(kCacheLine) std::deque<T> bufferB;
  alignas(kCacheLine) const int32_t maxItems;
  std::thread thread;

 protected:
  std::atomic<int32_t> state{QueueStopped};

 private:
  alignas(kCacheLine) std::mutex queueMutex;  // guards the two pointers and the write buffer
  std::condition_variable wakeCondition;
  std::deque<T>* readBuffer = &bufferB;   // the consumer's
  std::deque<T>* writeBuffer = &bufferA;  // the producers'
  const int64_t waitMillis;
  const bool exitWhenIdle;
};

}  // namespace orvane
