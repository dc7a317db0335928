#pragma once

#include <list>
#include <set>
#include <string>

#include "tests/trading/inbox.h"
#include "tests/trading/secondbook.h"

namespace orvane::terminal::testing {

// Compares every list and push of the running host with the second book, as the library writes them for clients.
class ListCheck {
 public:
  ListCheck(second::SecondBook& book, Inbox& inbox) : book_(book), inbox_(inbox) {}

  // Compares everything, and the lists of one account, of each in turn; `selected` are the accounts of one more query
  // by code type.
  void compare(const std::set<int32_t>& selected);

 private:
  void adoptNotes();
  std::list<int32_t> online(const std::list<int32_t>& selector) const;
  void compareOrders(const std::list<int32_t>& selector);
  void compareCapital(const std::list<int32_t>& selector);
  void comparePositions(const std::list<int32_t>& selector);
  void comparePushes();
  void compareCodeTypes(const std::set<int32_t>& accounts, bool derivatives, bool securities);
  void compareMonitor();
  void compareQuotes();

  second::SecondBook& book_;
  Inbox& inbox_;
  int64_t adopted_ = 0;  // the last order whose note was taken over
  int64_t request_ = 0;
  int32_t turn_ = 0;  // the account whose lists are compared
};

// A refusal begins with `expected`, and is empty if that is.
void expectRefusal(const std::string& got, const std::string& expected);

}  // namespace orvane::terminal::testing
