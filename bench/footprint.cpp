#include <chrono>
#include <memory>
#include <thread>

#include "bench/barequeues.h"
#include "bench/figure.h"
#include "bench/servers.h"
#include "bench/timing.h"

namespace orvane::bench {
namespace {

constexpr const char* kRequest = R"({"id":1,"topic":"capital.list","data":[1,2,3,4]})";

struct Bench {
  Desk desk;  // the sample data alone
  Exchange ours{desk.login(), kRequest, askOnce(desk.start("still").port(), desk.login(), kRequest)};
  Exchange bare{"", kRequest, ours.reply};

  Server start() const { return desk.start("still"); }
  Server startBare() const { return startBareServer(desk.folder(), bare.reply); }
};

// From the start of the process to the first answer to a client that logs in and asks.
template <typename Start>
double startTime(const Start& start, const Exchange& exchange) {
  const double begin = wallTime();
  const Server server = start();
  Clients(server.port(), 1, exchange).load(1);
  return wallTime() - begin;
}

// What each idle client adds to a server that has answered one before.
double clientMemory(const Server& server, const Exchange& exchange) {
  constexpr size_t kClients = 80;  // fewer than one token may open
  Clients(server.port(), 1, exchange).load(1);
  const double before = server.residentBytes();
  const Clients idle(server.port(), kClients, exchange);
  return (server.residentBytes() - before) / kClients;
}

// Processor time of an idle minute, from a shorter span.
template <typename ProcessorTime>
double idleMinute(const ProcessorTime& processorTime) {
  constexpr double kSpan = 1e9;
  constexpr double kMinute = 60e9;
  const double begin = wallTime();
  const double before = processorTime();
  std::this_thread::sleep_for(std::chrono::nanoseconds(static_cast<int64_t>(kSpan)));
  return (processorTime() - before) * kMinute / (wallTime() - begin);
}

// With prices that move, as they do unless the user says otherwise, and one client that asks nothing.
double terminalsIdleMinute(const Bench& bench) {
  const Server server = bench.desk.start("walk");
  const Clients client(server.port(), 1, {bench.ours.login, "", ""});
  return idleMinute([&] { return server.processorTime(); });
}

// What the look-up each millisecond costs by itself.
double waitersIdleMinute() {
  const SwapQueue<int> queue([](int&) {});
  return idleMinute([] { return clockTime(CLOCK_PROCESS_CPUTIME_ID); });
}

Sides startSides() {
  const auto bench = std::make_shared<Bench>();
  return {[=] { return startTime([&] { return bench->start(); }, bench->ours); },
          [=] { return startTime([&] { return bench->startBare(); }, bench->bare); }};
}

Sides memorySides() {
  const auto bench = std::make_shared<Bench>();
  return {[=] { return clientMemory(bench->start(), bench->ours); },
          [=] { return clientMemory(bench->startBare(), bench->bare); }};
}

Sides idleSides() {
  const auto bench = std::make_shared<Bench>();
  return {[=] { return terminalsIdleMinute(*bench); }, waitersIdleMinute};
}

}  // namespace

std::vector<Figure> footprintFigures() {
  const std::string bare = "bare Beast server, the same bytes";
  return {
      {"start to first answer", bare, "ns", Bound::AtMost, 3, 1.5, 15, startSides},
      {"resident memory of an idle client", bare, "B", Bound::AtMost, 2.5, 1.5, 7, memorySides},
      {"processor time of an idle minute", "one thread that looks up each millisecond", "ns", Bound::AtMost, 2, 1, 7,
       idleSides},
  };
}

}  // namespace orvane::bench
