#pragma once

#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "host/mobilemessage.h"
#include "tests/trading/secondbook.h"

namespace orvane::terminal::testing {

// Compares every list and push of the running host with the second book. What only the host can know (times, the ends
// of refusals) is taken over when it is first seen, and must stay as it was.
class ListCheck {
 public:
  explicit ListCheck(second::SecondBook& book) : book_(book) {}

  // Receives the host's messages. Any thread.
  void put(const MobileMessage& message);

  // Expects a terminal.notice that begins so.
  void expectNotice(const std::string& text) { notices_.push_back(text); }

  // Expects the text of the last order's refusal as its note.
  void expectNote(const std::string& text) { note_ = text; }

  // Compares everything; `selected` are the accounts of one more query by code type.
  void compare(const std::set<int32_t>& selected);

 private:
  std::vector<MobileMessage> takeMessages();
  void compareOrders();
  void adopt(second::PlacedOrder& expected, const Order& got);
  void compareFills();
  void comparePushes();
  void compareAccounts();
  void compareCodeTypes(const std::set<int32_t>& accounts, bool derivatives, bool securities);
  void comparePositions();
  void compareMonitor();
  void compareQuotes();

  second::SecondBook& book_;
  std::vector<std::string> notices_;
  std::string note_;
  int64_t compared_ = 0;  // when the last comparison ended, in milliseconds since 1970
  int64_t request_ = 0;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<MobileMessage> messages_;
};

// A refusal begins with `expected`, and is empty if that is.
void expectRefusal(const std::string& got, const std::string& expected);

}  // namespace orvane::terminal::testing
