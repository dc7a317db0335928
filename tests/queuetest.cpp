#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "pocketagent/asyncbufferqueuethread.h"

namespace orvane {
namespace {

using testing::ElementsAre;

// Takes down the numbers it handles. `startAndHold` makes the consumer wait inside an item until `release`.
class Recorder : public AsyncBufferQueueThread<int> {
 public:
  using AsyncBufferQueueThread::AsyncBufferQueueThread;
  ~Recorder() override {
    release();
    stopThread(false);
  }

  // Starts the consumer with the items 0 and 1 and returns once it is inside the first.
  void startAndHold() {
    set(held_, true);
    enqueue(0);
    enqueue(1);
    startThread();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return current_ == 0; });
  }
  // An item that stops the queue reads what a start writes, so the start holds the lock that a stop takes.
  void startLocked() {
    const std::lock_guard control(controlMutex);
    startThread();
  }
  void release() { set(held_, false); }
  void stopWhileHeld(bool drain) {
    std::thread stopper([this, drain] { stopThread(drain); });
    while (state == QueueRunning) {
      std::this_thread::yield();
    }
    release();
    stopper.join();
  }
  std::vector<int> waitForHandled(size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return handled_.size() >= count; });
    return handled_;
  }
  std::vector<int> handled() { return waitForHandled(0); }
  std::vector<std::thread::id> threads() {
    const std::lock_guard lock(mutex_);
    return threads_;
  }
  bool isStopped() const { return state == QueueStopped; }
  void waitUntilEnded() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return ended_; });
  }

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
    std::unique_lock lock(mutex_);
    current_ = item;
    changed_.notify_all();
    changed_.wait(lock, [&] { return !held_; });
    handled_.push_back(item);
    threads_.push_back(std::this_thread::get_id());
    changed_.notify_all();
  }
  void run() override {
    AsyncBufferQueueThread::run();
    set(ended_, true);
  }

 private:
  void set(bool& flag, bool value) {
    const std::lock_guard lock(mutex_);
    flag = value;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<int> handled_;
  std::vector<std::thread::id> threads_;
  int current_ = -1;
  bool held_ = false;
  bool ended_ = false;
};

TEST(Queue, OverflowDropsTheOldestAndCountsIt) {
  Recorder queue(3, 1, false);
  std::vector<int32_t> counts;
  for (int item = 1; item <= 5; ++item) {
    counts.push_back(queue.enqueue(item));
  }
  EXPECT_THAT(counts, ElementsAre(1, 2, 3, 4, 4));
  queue.startThread();
  EXPECT_THAT(queue.waitForHandled(3), ElementsAre(3, 4, 5));
  Recorder narrow(1, 1, false);
  narrow.enqueue(1);
  EXPECT_EQ(narrow.enqueue(2), 2);
  narrow.startThread();
  EXPECT_THAT(narrow.waitForHandled(1), ElementsAre(2));
}

TEST(Queue, LimitBelowOneDropsNothing) {
  for (const int32_t limit : {0, -1}) {
    Recorder queue(limit, 0, false);
    for (int item = 0; item < 100; ++item) {
      EXPECT_EQ(queue.enqueue(item), item + 1);
    }
    queue.startThread();
    EXPECT_EQ(queue.waitForHandled(100).size(), 100U);
  }
}

TEST(Queue, StopDropsAllButTheRunningItemAndDrainRunsAllThatWaits) {
  for (const bool drain : {false, true}) {
    Recorder queue(-1, 1000, false);
    queue.startAndHold();
    queue.enqueue(2);
    queue.stopWhileHeld(drain);
    std::vector<int> handled = drain ? std::vector{0, 1, 2} : std::vector{0};
    EXPECT_EQ(queue.handled(), handled);
    queue.startThread();
    queue.enqueue(99);
    handled.push_back(99);
    EXPECT_EQ(queue.waitForHandled(handled.size()), handled);
  }
}

TEST(Queue, StopDropsWhatNoConsumerEverTookOver) {
  Recorder queue(-1, 1, false);
  queue.enqueue(1);
  queue.stopThread(false);
  queue.startThread();
  queue.enqueue(99);
  EXPECT_THAT(queue.waitForHandled(1), ElementsAre(99));
}

TEST(Queue, WakesFromTheLongestWaitForAnItemAndForAStop) {
  Recorder queue(-1, INT64_MAX, false);
  queue.startThread();
  queue.wakeUp();                                   // for nothing
  for (size_t count = 1; count <= 1000; ++count) {  // often enough for the consumer to sleep in between
    queue.enqueue(1);
    queue.waitForHandled(count);
  }
  queue.stopThread(false);
  EXPECT_TRUE(queue.isStopped());
}

TEST(Queue, RestartKeepsWhatWaitsAndSecondStartIsTheSameThread) {
  Recorder queue(-1, 1, false);
  queue.stopThread(false);
  queue.stopThread(true);
  queue.enqueue(1);
  queue.startThread();
  queue.waitForHandled(1);
  queue.startThread();
  queue.enqueue(2);
  EXPECT_THAT(queue.waitForHandled(2), ElementsAre(1, 2));
  EXPECT_EQ(queue.threads()[0], queue.threads()[1]);
}

TEST(Queue, IdleExitEndsTheThreadAndTheNextStartCollectsIt) {
  Recorder queue(-1, 1, true);
  queue.enqueue(1);
  queue.startThread();
  queue.waitUntilEnded();
  queue.enqueue(2);
  queue.startThread();
  EXPECT_THAT(queue.waitForHandled(2), ElementsAre(1, 2));
}

TEST(Queue, ClearDropsOnlyWhatTheConsumerHasNotTakenOver) {
  Recorder queue(-1, 1, false);
  queue.startAndHold();
  queue.enqueue(2);
  queue.clearQueue();
  queue.enqueue(3);
  queue.release();
  EXPECT_THAT(queue.waitForHandled(3), ElementsAre(0, 1, 3));
}

TEST(Queue, StopFromWithinAnItemIsADeadlockError) {
  Recorder queue(-1, 1, false);
  queue.stopsItself = true;
  queue.enqueue(1);
  queue.startLocked();
  queue.waitForHandled(1);
  queue.waitUntilEnded();
  EXPECT_EQ(queue.selfStopError, std::errc::resource_deadlock_would_occur);
}

TEST(Queue, MayBeDestroyedAsSoonAsItsItemHasRun) {
  for (int round = 0; round < 100; ++round) {
    auto queue = std::make_unique<Recorder>(-1, 1, false);
    queue->startThread();
    std::thread producer([&queue = *queue] { queue.enqueue(1); });
    queue->waitForHandled(1);
    queue.reset();  // a race for the thread sanitizer where the producer still uses the queue
    producer.join();
  }
}

// Replaces what a subclass may replace: it runs one item of each batch and drops the rest.
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
  for (const int item : {1, 2, 3}) {
    queue.enqueue(item);
  }
  queue.startThread();
  EXPECT_THAT(queue.waitForHandled(1), ElementsAre(1));
  queue.enqueue(4);
  EXPECT_THAT(queue.waitForHandled(2), ElementsAre(1, 4));
}

TEST(Queue, ProducersKeepTheirOrder) {
  constexpr int kEach = 2000;
  Recorder queue(-1, 1, false);
  queue.startThread();
  std::vector<std::thread> producers;
  producers.reserve(4);
  for (int producer = 0; producer < 4; ++producer) {
    producers.emplace_back([&queue, producer] {
      for (int item = 0; item < kEach; ++item) {
        queue.enqueue(producer * kEach + item);
      }
    });
  }
  for (std::thread& producer : producers) {
    producer.join();
  }
  std::vector<int> next{0, kEach, 2 * kEach, 3 * kEach};
  for (const int item : queue.waitForHandled(size_t{4} * kEach)) {
    EXPECT_EQ(item, next[static_cast<size_t>(item / kEach)]++);
  }
}

}  // namespace
}  // namespace orvane
