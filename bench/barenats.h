#pragma once

#include <memory>
#include <string>

#include "tests/relay/cluster.h"

namespace orvane::bench {

// The relay's yardstick: a client of one server of the cluster and a responder at another, both libnats alone, with
// natsOptions_SetSendAsap. Each request and each reply crosses two servers, as those of a phone do. A fault throws
// std::runtime_error.
class BareNats {
 public:
  BareNats(const test::Cluster& cluster, std::string request, std::string reply);
  ~BareNats();
  BareNats(const BareNats&) = delete;
  BareNats& operator=(const BareNats&) = delete;

  // The median round trip in nanoseconds, with the same pauses as an Asker's.
  double measure();

 private:
  struct End;
  const std::string request_;
  const std::string reply_;
  std::unique_ptr<End> responder_;
  std::unique_ptr<End> client_;
};

}  // namespace orvane::bench
