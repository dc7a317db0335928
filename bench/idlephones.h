#pragma once

#include "tests/relay/cluster.h"

namespace orvane::bench {

// What each of 1,000 idle phones adds to the resident memory of a relay, in bytes.
double idlePhoneMemory(const test::Cluster& cluster, bool hasTls);

}  // namespace orvane::bench
