#pragma once

#include <map>
#include <string>
#include <string_view>

#include "terminal/client/client.h"

namespace orvane::test {

// Checks frames of the terminal and of a client against docs/schemas. An error names the schema, the keyword and the
// place; it is empty for a valid frame.
std::string findAnswerFault(std::string_view frame);
std::string findRequestFault(std::string_view frame);
std::map<std::string, std::string> describedRights();  // by topic

// Fails the running test for each message that its schema does not allow.
class CheckedClient : public terminal::Client {
 public:
  using Client::Client;

 protected:
  void onMessage(std::string_view text) override;
};

}  // namespace orvane::test
