#pragma once

#include <map>
#include <string>
#include <string_view>

#include "terminal/client/client.h"

namespace orvane::test {

// The schemas of docs/schemas, held against frames of the terminal and of a phone. A fault names the schema, the
// keyword and the place; a frame that is as it is described has an empty one.
std::string findAnswerFault(std::string_view frame);
std::string findRequestFault(std::string_view frame);
std::map<std::string, std::string> describedRights();  // by topic

// Fails the running test at each message that is not as it is described.
class CheckedClient : public terminal::Client {
 public:
  using Client::Client;

 protected:
  void onMessage(std::string_view text) override;
};

}  // namespace orvane::test
