#include "bench/memory.h"

#include <algorithm>

#include <fmt/format.h>
#include <malloc.h>

#include "bench/paperdesk.h"
#include "host/mobilesrv.h"
#include "pocketagent/mobileworker.h"
#include "terminal/trading/tradinghost.h"
#include "tests/system/terminalprocess.h"

namespace {

// What this process takes of the heap while `counting`; only one thread runs then.
bool counting = false;
size_t allocations = 0;
ptrdiff_t live = 0;
ptrdiff_t peak = 0;

void* taken(void* block) {
  if (counting && block != nullptr) {
    ++allocations;
    live += static_cast<ptrdiff_t>(malloc_usable_size(block));
    peak = std::max(peak, live);
  }
  return block;
}

void given(void* block) {
  if (counting && block != nullptr) {
    live -= static_cast<ptrdiff_t>(malloc_usable_size(block));
  }
}

}  // namespace

// In front of the C library's own, for this whole program.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) { return taken(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) { return taken(__libc_calloc(count, size)); }
void* realloc(void* block, size_t size) {
  given(block);
  return taken(__libc_realloc(block, size));
}
void free(void* block) {
  given(block);
  __libc_free(block);
}
}

namespace orvane::bench {
namespace {

// Runs each task on the thread that pushes.
class DirectWorker : public MobileWorker {
 public:
  int32_t enqueue(const std::shared_ptr<IRequestTask>& task) override {
    task->execute();
    return 1;
  }
};

class SizeOfReply : public IMobileSrv {
 public:
  ResultStatus start(const MobileSrvInfo& /*info*/) override { return {}; }
  ResultStatus registerSpi(const std::shared_ptr<IMobileSrvSpi>& /*spi*/, int32_t* /*handle*/) override { return {}; }
  ResultStatus unregisterSpi(int32_t /*handle*/) override { return {}; }
  void stop() override {}
  bool isRunning() override { return true; }
  ResultStatus send(const MobileMessage& message) override {
    bytes = message.data.size();
    return {};
  }

  size_t bytes = 0;
};

// The accounts from `first` on, as a body.
std::string selector(int first, int count) {
  std::string list;
  for (int index = first; index < first + count; ++index) {
    list += fmt::format("{}{}", list.empty() ? "" : ",", index);
  }
  return "[" + list + "]";
}

}  // namespace

std::vector<RequestMemory> measureMemory() {
  const test::TempDir folder;
  makePaperDesk(folder.path(), 500);
  terminal::TradingOptions options;
  options.dataDir = folder.path();
  terminal::TradingHost host(options);
  SizeOfReply server;
  host.setMobileServer(&server);
  DirectWorker worker;
  std::vector<RequestMemory> requests;
  const auto measure = [&](size_t rows, const std::string& body) {
    worker.push(1, 8, "position.list", body);  // what is made once and stays does not count
    allocations = 0;
    live = peak = 0;
    counting = true;
    worker.push(1, 8, "position.list", body);
    counting = false;
    requests.push_back({rows, server.bytes, allocations, static_cast<size_t>(peak)});
  };
  requests.reserve(3);
  measure(1, selector(kAccountOfOne, 1));
  measure(100, selector(kFirstAccountOfTwenty, 5));
  measure(10'000, selector(kFirstAccountOfTwenty, 500));
  host.setMobileServer(nullptr);
  return requests;
}

bool growsNoFasterThanRows(const std::vector<RequestMemory>& requests) {
  constexpr double kMargin = 1.05;
  const RequestMemory& few = requests[1];
  const RequestMemory& many = requests[2];
  const double factor = kMargin * static_cast<double>(many.rows) / static_cast<double>(few.rows);
  return static_cast<double>(many.allocations) <= factor * static_cast<double>(few.allocations) &&
         static_cast<double>(many.peakBytes) <= factor * static_cast<double>(few.peakBytes);
}

}  // namespace orvane::bench
