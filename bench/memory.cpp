#include "bench/memory.h"

#include <algorithm>

#include <malloc.h>

#include "bench/localserver.h"
#include "bench/paperdesk.h"
#include "terminal/trading/tradinghost.h"
#include "tests/system/terminalprocess.h"

namespace {

// Heap use of this process while `counting`; only one thread runs then.
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
  if (counting && block != nullptr) live -= static_cast<ptrdiff_t>(malloc_usable_size(block));
}

}  // namespace

// Take the place of the C library's own in this whole program.
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

std::vector<RequestMemory> measureMemory() {
  const test::TempDir folder;
  makePaperDesk(folder.path(), 10'000);
  terminal::TradingOptions options;
  options.dataDir = folder.path();
  terminal::TradingHost host(options);
  LastReply server;
  host.setMobileServer(&server);
  DirectWorker worker;
  std::vector<RequestMemory> requests;
  for (const size_t rows : std::initializer_list<size_t>{1, 100, 10'000}) {
    const std::string body = selectorOfRows(rows);
    worker.ask("position.list", body);  // allocations that are made once and kept do not count
    allocations = 0;
    live = peak = 0;
    counting = true;
    worker.ask("position.list", body);
    counting = false;
    requests.push_back({rows, server.bytes, allocations, static_cast<size_t>(peak)});
  }
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
