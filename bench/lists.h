#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace orvane::bench {

// Where the time of a list goes, in this order:
// host calls  the library's calls of the host: records, names, rates, conversions to UTF-8
// collecting  joining the host's records to rows
// writing     the reply's JSON text
// checking    the gateway's check that the reply is JSON
// sending     the rest: frames, hand-offs, copies, sockets, and the client's reading
inline constexpr std::array<const char*, 5> kListParts{"host calls", "collecting", "writing", "checking", "sending"};
inline constexpr size_t kLocalParts = 4;  // those that need no socket

// One list of so many rows. Times are nanoseconds per row.
struct ListCost {
  std::string topic;
  size_t rows = 0;
  size_t replyBytes = 0;
  std::array<double, kListParts.size()> parts{};
  double whole = 0;  // a client's round trip through the terminal
  double bare = 0;   // the same bytes from a bare Beast server
};

// "position.list" and "order.list" at 10, 100, 1,000 and 10,000 rows, each of a desk that holds little more than these;
// medians of so many rounds.
std::vector<ListCost> measureLists(size_t rounds);

// Measures all parts but the sending, inside this process, against the host of this folder. Throws std::runtime_error
// if the library's reply differs from one that is put together from the parts.
void measureLocalParts(ListCost& cost, const std::filesystem::path& deskFolder, size_t rounds);

}  // namespace orvane::bench
