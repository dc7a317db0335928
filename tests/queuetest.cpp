#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <semaphore>
#include <system_error>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "pocketagent/asyncbufferqueuethread.h"

namespace orvane {
namespace {

using testing::ElementsAre;

constexpr std::chrono::seconds kLimit{30};  // of all waits of a queue together
constexpr int kHold = -1;                   // an item that does not end before `release`

class Recorder : public AsyncBufferQueueThread<int> {
 public:
  using AsyncBufferQueueThread::AsyncBufferQueueThread;
  ~Recorder() override { stopThread(false); }

  // Starts the consumer with the items kHold and 1 and returns once it is inside the first.
  void startAndHold() {
    enqueue(kHold);
    enqueue(1);
    startLocked();
    EXPECT_TRUE(entered_.try_acquire_until(end_));
  }
  void startLocked() {
    const std::lock_guard control(controlMutex);
    startThread();
  }
  void release() { mayEnd_.release(); }
  // The held item ends once the stop has begun.
  void stopWhileHeld(bool drain) {
    std::thread stopper([this, drain] { stopThread(drain); });
    while (state == QueueRunning) std::this_thread::yield();
    release();
    stopper.join();
  }
  // The next items that are handled, fewer if they do not come in time.
  std::vector<int> next(size_t count) {
    std::vector<int> items;
    for (; count > 0 && done_.try_acquire_until(end_); --count) {
      const std::lock_guard lock(mutex_);
      items.push_back(handled_.front());
      handled_.pop_front();
    }
    return items;
  }
  bool waitUntilEnded() { return ended_.try_acquire_until(end_); }
  bool isStopped() const { return state == QueueStopped; }

  std::atomic<int> runs = 0;
  bool stopsItself = false;
  std::error_code selfStopError;

 protected:
  void handle(int& item) override {
    if (stopsItself) {
      try {
        stopThread(false);
      } catch (const std::system_error& error) {
        selfStopError = error.code();
      }
    }
    if (item == kHold) {
      entered_.release();
      EXPECT_TRUE(mayEnd_.try_acquire_until(end_));
    }
    {
      const std::lock_guard lock(mutex_);
      handled_.push_back(item);
    }
    done_.release();
  }
  void run() override {
    ++runs;
    AsyncBufferQueueThread::run();
    ended_.release();
  }

 private:
  const std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + kLimit;
  std::counting_semaphore<> entered_{0}, mayEnd_{0}, done_{0}, ended_{0};
  std::mutex mutex_;  // guards handled_
  std::deque<int> handled_;
};

TEST(Queue, OverflowDropsTheOldestAndCountsIt) {
  const std::vector<std::pair<int32_t, std::vector<int>>> rows = {
      {3, {3, 4, 5}}, {1, {5}}, {0, {1, 2, 3, 4, 5}}, {-1, {1, 2, 3, 4, 5}}};
  for (const auto& [limit, left] : rows) {
    Recorder queue(limit, 0, false);
    for (int32_t item = 1; item <= 5; ++item) {
      EXPECT_EQ(queue.enqueue(item), limit < 1 ? item : std::min(item, limit + 1));
    }
    queue.startThread();
    EXPECT_EQ(queue.next(left.size()), left);
  }
}

TEST(Queue, StopDropsAllButTheRunningItemAndDrainRunsAll) {
  for (const bool drain : {false, true}) {
    Recorder queue(-1, 1000, false);
    queue.startAndHold();
    queue.enqueue(2);
    queue.stopWhileHeld(drain);
    EXPECT_TRUE(queue.isStopped());
    queue.startThread();
    queue.enqueue(9);
    EXPECT_EQ(queue.next(drain ? 4 : 2), drain ? (std::vector{kHold, 1, 2, 9}) : (std::vector{kHold, 9}));
  }
}

TEST(Queue, StartRunsWaitingItemsUnlessAStopCameBetween) {
  Recorder queue(-1, 1, false);
  queue.enqueue(1);
  queue.startThread();
  EXPECT_THAT(queue.next(1), ElementsAre(1));
  queue.startThread();
  queue.enqueue(2);
  EXPECT_THAT(queue.next(1), ElementsAre(2));
  EXPECT_EQ(queue.runs, 1);  // the second start changes nothing
  queue.stopThread(true);
  queue.enqueue(3);
  queue.stopThread(false);
  queue.startThread();
  queue.enqueue(4);
  EXPECT_THAT(queue.next(1), ElementsAre(4));
}

TEST(Queue, WakesFromTheLongestWaitForAnItemAndForAStop) {
  Recorder queue(-1, INT64_MAX, false);
  queue.startThread();
  queue.wakeUp();                           // without an item
  for (int item = 0; item < 200; ++item) {  // often enough for the consumer to sleep in between
    queue.enqueue(item);
    ASSERT_THAT(queue.next(1), ElementsAre(item));
  }
  queue.stopThread(false);
}

TEST(Queue, IdleExitEndsTheThreadAndTheNextStartCollectsIt) {
  Recorder queue(-1, 1, true);
  for (const int item : {1, 2}) {
    queue.enqueue(item);
    queue.startThread();
    EXPECT_THAT(queue.next(1), ElementsAre(item));
    EXPECT_TRUE(queue.waitUntilEnded());
  }
}

TEST(Queue, ClearDropsOnlyWhatTheConsumerHasNotTakenOver) {
  Recorder queue(-1, 1, false);
  queue.startAndHold();
  queue.enqueue(2);
  queue.clearQueue();
  queue.enqueue(3);
  queue.release();
  EXPECT_THAT(queue.next(3), ElementsAre(kHold, 1, 3));
}

TEST(Queue, StopFromWithinAnItemIsADeadlockError) {
  Recorder queue(-1, 1, false);
  queue.stopsItself = true;
  queue.enqueue(1);
  queue.startLocked();  // the item's stop takes the same lock, and so sees the thread that the start set
  EXPECT_TRUE(queue.waitUntilEnded());
  EXPECT_EQ(queue.selfStopError, std::errc::resource_deadlock_would_occur);
}

TEST(Queue, MayBeDestroyedAsSoonAsItsItemHasRun) {
  for (int round = 0; round < 100; ++round) {
    auto queue = std::make_unique<Recorder>(-1, 1, false);
    queue->startThread();
    std::thread producer([&queue = *queue] { queue.enqueue(1); });
    queue->next(1);
    queue.reset();  // a race for the thread sanitizer if the producer still uses the queue
    producer.join();
  }
}

// Runs one item of each batch and drops the rest.
class OnePerBatch : public Recorder {
 public:
  using Recorder::Recorder;
  ~OnePerBatch() override { stopThread(false); }

 protected:
  void run() override {
    while (waitForItems()) {
      swapBuffers();
      handle(readBuffer->front());
      readBuffer->clear();
    }
  }
  void swapBuffers() override {
    const std::lock_guard queue(queueMutex);
    readBuffer->swap(*writeBuffer);
  }
};

TEST(Queue, SubclassMayReplaceTheLoopAndTheSwap) {
  OnePerBatch queue(-1, 1, false);
  for (const int item : {1, 2, 3}) queue.enqueue(item);
  queue.startThread();
  EXPECT_THAT(queue.next(1), ElementsAre(1));
  queue.enqueue(4);
  EXPECT_THAT(queue.next(1), ElementsAre(4));
}

}  // namespace
}  // namespace orvane
