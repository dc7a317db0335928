#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "bench/barequeues.h"
#include "bench/figure.h"
#include "bench/placement.h"
#include "bench/timing.h"
#include "pocketagent/asyncbufferqueuethread.h"

namespace orvane::bench {
namespace {

// A queue's item: like a request, created once and run once.
struct Task {
  std::function<void()>* run;
};
using TaskPtr = std::shared_ptr<Task>;

void runTask(const TaskPtr& task) { (*task->run)(); }

class OurQueue : public AsyncBufferQueueThread<TaskPtr> {
 public:
  explicit OurQueue(std::function<void(TaskPtr&)> handle)
      : AsyncBufferQueueThread(-1, 1, false), handle_(std::move(handle)) {
    startThread();
  }
  ~OurQueue() override { stopThread(true); }

 protected:
  void handle(TaskPtr& item) override { handle_(item); }

 private:
  std::function<void(TaskPtr&)> handle_;
};

// A queue under load. The last task wakes the thread that measures.
template <typename Queue>
class Load {
 public:
  explicit Load(std::shared_ptr<const Placement> placement) : placement_(std::move(placement)) {
    handOff(std::make_shared<Task>(Task{&place_}));
  }

  // Items per second through the queue.
  double throughput(size_t producers) {
    constexpr size_t kItems = 100'000;
    left_ = kItems;
    done_ = false;
    std::atomic<size_t> ready{0};
    std::vector<std::thread> threads;
    for (size_t i = 1; i < producers; ++i) threads.emplace_back([&] { produce(ready, producers, kItems / producers); });
    produce(ready, producers, kItems / producers);
    done_.wait(false);
    for (std::thread& thread : threads) thread.join();
    return kItems * 1e9 / (arrived_ - begin_);
  }

  // Nanoseconds from `enqueue` to the task's run with an idle consumer: the quantile `part` of 200 samples.
  double latency(double part) {
    constexpr double kRest = 30'000;  // until the consumer sleeps
    std::vector<double> samples;
    for (int i = 0; i < 200; ++i) {
      for (const double begin = wallTime(); wallTime() - begin < kRest;) {
      }
      const double enqueued = wallTime();
      handOff(std::make_shared<Task>(Task{&run_}));
      samples.push_back(arrived_ - enqueued);
    }
    return quantile(samples, part);
  }

 private:
  // Spins until the task has run, so that the producer stays on its processor.
  void handOff(const TaskPtr& task) {
    left_ = 1;
    done_ = false;
    queue_.enqueue(task);
    while (!done_) {
    }
  }

  void produce(std::atomic<size_t>& ready, size_t producers, size_t items) {
    if (++ready == producers) begin_ = wallTime();
    while (ready < producers) std::this_thread::yield();
    for (size_t i = 0; i < items; ++i) queue_.enqueue(std::make_shared<Task>(Task{&run_}));
  }

  void arrive() {
    if (--left_ == 0) {
      arrived_ = wallTime();
      done_ = true;
      done_.notify_one();
    }
  }

  const std::shared_ptr<const Placement> placement_;
  std::function<void()> run_ = [this] { arrive(); };
  std::function<void()> place_ = [this] {
    placement_->placeConsumer();
    arrive();
  };
  size_t left_ = 0;  // only the consumer uses it while a load runs
  double arrived_ = 0;
  double begin_ = 0;
  std::atomic<bool> done_ = false;
  Queue queue_{[](TaskPtr& task) { runTask(task); }};
};

// A queue exists for one slice only. The library's consumer wakes each millisecond, which keeps its processor from
// sleeping and would do the same for the yardstick.
template <typename Queue, typename Measure>
std::function<double()> slice(Measure measure, const std::shared_ptr<const Placement>& placement) {
  return [measure, placement] {
    Load<Queue> load(placement);
    return measure(load);
  };
}

template <typename Bare, typename Measure>
Sides sides(Measure measure) {
  const auto placement = std::make_shared<const Placement>();
  return {slice<OurQueue>(measure, placement), slice<Bare>(measure, placement)};
}

template <typename Bare>
Sides throughputSides(size_t producers) {
  return sides<Bare>([producers](auto& load) { return load.throughput(producers); });
}

Sides latencySides(double part) {
  return sides<PopQueue<TaskPtr>>([part](auto& load) { return load.latency(part); });
}

}  // namespace

std::vector<Figure> queueFigures() {
  const std::string swap = "two deques, swapped under the lock";
  const std::string pop = "one deque, one item popped under the lock";
  constexpr auto kSwap = throughputSides<SwapQueue<TaskPtr>>;
  constexpr auto kPop = throughputSides<PopQueue<TaskPtr>>;
  return {
      {"queue, 1 producer", swap, "items/s", Bound::AtLeast, 0.65, 0.80, 101, [] { return kSwap(1); }},
      {"queue, 4 producers", swap, "items/s", Bound::AtLeast, 0.65, 0.80, 101, [] { return kSwap(4); }},
      {"queue, 1 producer, against popping", pop, "items/s", Bound::AtLeast, 1.20, 1.50, 101, [] { return kPop(1); }},
      {"hand-off, median", pop, "ns", Bound::AtMost, 1.5, 1.0, 101, [] { return latencySides(0.5); }},
      {"hand-off, 99th percentile", pop, "ns", Bound::AtMost, 2.0, 1.0, 101, [] { return latencySides(0.99); }},
  };
}

}  // namespace orvane::bench
