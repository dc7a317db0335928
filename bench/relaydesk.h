#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/servers.h"
#include "tests/relay/cluster.h"

namespace orvane::bench {

inline constexpr size_t kClients = 80;  // fewer than one token may open

// Starts pocket-relay with the credentials of `name`, for comma-separated servers of the cluster.
Server startRelay(const test::Cluster& cluster, const std::string& name, const std::filesystem::path& folder,
                  const std::string& servers, const std::vector<std::string>& options = {});

// Processor time in nanoseconds that the NATS servers have used.
double serversTime(const test::Cluster& cluster);

// Two terminals with the same rows: one that clients reach directly, and one behind a relay and three NATS servers.
class RelayDesk {
 public:
  RelayDesk();

  const test::Cluster& cluster() const { return cluster_; }

  // Throws std::runtime_error unless both terminals give the same reply.
  Exchange exchange(std::string_view topic, std::string_view body) const;

  // What the programs spend on a request that comes in through the relay: rows of a Markdown table.
  std::string requestCost(std::string_view name, const Exchange& exchange) const;

  Clients direct(size_t count, const Exchange& exchange) const;
  Clients relayed(size_t count, const Exchange& exchange) const;

 private:
  test::Cluster cluster_{false};
  test::TempDir folder_;
  Desk nearDesk_{20};
  Desk farDesk_{20};
  Server near_;
  Server relay_;
  Server far_;
  std::string farLogin_;
};

}  // namespace orvane::bench
