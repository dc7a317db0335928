#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "tests/gateway/model/world.h"

namespace orvane::test::model {

// The lines of audit.log, in any order.
class Audit {
 public:
  explicit Audit(const World& world) : world_(world) {}

  const std::multiset<std::string>& lines() const { return lines_; }

  // The head of the line of a request that comes now.
  std::string head(int client, const Request& request) const;

  void answered(const std::string& head, const Reply& reply);
  void unknown(const std::string& head);

  // For lack of a right. Of a token's refusals within a second some have a line, and the rest are summed up at its end.
  void refused(int client, Request request, const std::string& fault);
  void endSecond(int64_t time);

 private:
  const World& world_;
  std::multiset<std::string> lines_;
  std::map<int, int> refusals_;  // in this second, by token
};

}  // namespace orvane::test::model
