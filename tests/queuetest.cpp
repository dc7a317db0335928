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

// Records the numbers it handles. While held, the consumer stays inside an item. Waits end after ten seconds.
class Recorder : public AsyncBufferQueueThread<int> {
 public:
  using AsyncBufferQueueThread::AsyncBufferQueueThread;
  ~Recorder() override {
    release();
    stopThread(false);
  }

  // Starts the consumer with the items 0 and 1 and returns once it is inside the first.
  void startAndHold() {
    held_ = true;
    enqueue(0);
    enqueue(1);
    startThread();
    wait([&] { return current_ == 0; });
  }
  void startLocked() {
    const std::lock_guard control(controlMutex);
    startThread();
  }
  void release() { set(held_, false); }
  // Returns once the stop has ended; it has begun before the held item ends.
  void stopWhileHeld(bool drain) {
    std::thread stopper([this, drain] { stopThread(drain); });
    while (state == QueueRunning) {
      std::this_thread::yield();
    }
    release();
    stopper.join();
  }
  std::vector<int> waitForHandled(size_t count) {
    wait([&] { return handled_.size() >= count; });
    const std::lock_guard lock(mutex_);
    return handled_;
  }
  std::vector<std::thread::id> threads() {
    const std::lock_guard lock(mutex_);
    return threads_;
  }
  bool isStopped() const { return state == QueueStopped; }
  void waitUntilEnded() {
    wait([&] { return ended_; });
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
    set(current_, item);
    wait([&] { return !held_; });
    const std::lock_guard lock(mutex_);
    handled_.push_back(item);
    threads_.push_back(std::this_thread::get_id());
    changed_.notify_all();
  }
  void run() override {
    AsyncBufferQueueThread::run();
    set(ended_, true);
  }

 private:
  template <typename Value>
  void set(Value& member, Value value) {
    const std::lock_guard lock(mutex_);
    member = value;
    changed_.notify_all();
  }
  template <typename Condition>
  void wait(Condition condition) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, std::chrono::seconds(10), condition)) << handled_.size() << " handled";
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
  const std::vector<std::pair<int32_t, std::vector<int>>> rows = {
      {3, {3, 4, 5}}, {1, {5}}, {0, {1, 2, 3, 4, 5}}, {-1, {1, 2, 3, 4, 5}}};
  for (const auto& [limit, left] : rows) {
    Recorder queue(limit, 0, false);
    for (int32_t item = 1; item <= 5; ++item) {
      EXPECT_EQ(queue.enqueue(item), limit < 1 ? item : std::min(item, limit + 1));
    }
    queue.startThread();
    EXPECT_EQ(queue.waitForHandled(left.size()), left);
  }
}

TEST(Queue, StopDropsAllButTheRunningItemAndDrainRunsAll) {
  for (const bool drain : {false, true}) {
    Recorder queue(-1, 1000, false);
    queue.startAndHold();
    queue.enqueue(2);
    queue.stopWhileHeld(drain);
    std::vector<int> handled = drain ? std::vector{0, 1, 2} : std::vector{0};
    EXPECT_EQ(queue.waitForHandled(0), handled);
    EXPECT_TRUE(queue.isStopped());
    queue.startThread();
    queue.enqueue(99);
    handled.push_back(99);
    EXPECT_EQ(queue.waitForHandled(handled.size()), handled);
  }
}

TEST(Queue, StartRunsWaitingItemsUnlessAStopCameBetween) {
  Recorder queue(-1, 1, false);
  queue.enqueue(1);
  queue.startThread();
  queue.waitForHandled(1);
  queue.startThread();  // the same thread goes on
  queue.enqueue(2);
  queue.waitForHandled(2);
  queue.stopThread(true);
  queue.enqueue(3);
  queue.stopThread(false);
  queue.startThread();
  queue.enqueue(4);
  EXPECT_THAT(queue.waitForHandled(3), ElementsAre(1, 2, 4));
  EXPECT_EQ(queue.threads()[0], queue.threads()[1]);
}

TEST(Queue, WakesFromTheLongestWaitForAnItemAndForAStop) {
  Recorder queue(-1, INT64_MAX, false);
  queue.startThread();
  queue.wakeUp();                                  // without an item
  for (size_t count = 1; count <= 200; ++count) {  // often enough for the consumer to sleep in between
    queue.enqueue(1);
    queue.waitForHandled(count);
  }
  queue.stopThread(false);
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
  queue.startLocked();  // the item's stop takes the same lock, and so sees the thread that the start set
  queue.waitUntilEnded();
  EXPECT_EQ(queue.selfStopError, std::errc::resource_deadlock_would_occur);
}

TEST(Queue, MayBeDestroyedAsSoonAsItsItemHasRun) {
  for (int round = 0; round < 100; ++round) {
    auto queue = std::make_unique<Recorder>(-1, 1, false);
    queue->startThread();
    std::thread producer([&queue = *queue] { queue.enqueue(1); });
    queue->waitForHandled(1);
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
  for (const int item : {1, 2, 3}) {
    queue.enqueue(item);
  }
  queue.startThread();
  queue.waitForHandled(1);
  queue.enqueue(4);
  EXPECT_THAT(queue.waitForHandled(2), ElementsAre(1, 4));
}

TEST(Queue, ProducersKeepTheirOrder) {
  constexpr int kEach = 2000;
  Recorder queue(-1, 1, false);
  queue.startThread();
  std::vector<std::thread> producers;
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
