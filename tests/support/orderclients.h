#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvane::test {

// The body of "order.new" for one lot of account 1. No two orders share a source.
std::string orderData(const std::string& source);

// The request for it, whose key and id are its source.
std::string orderFrame(const std::string& key);

// Money for any number of these orders. REQUIRES: no terminal runs on the folder.
void giveFunds(const std::filesystem::path& dataDir);

// What clients of a run met, for its report.
struct OrderTally {
  std::atomic<size_t> acknowledged = 0, refused = 0, unknown = 0;  // answers
  std::atomic<size_t> logins = 0, resumed = 0;

  std::string text() const;
};

// Clients, each in a thread of its own, that place orders with keys, some of them again, until `end`. A client connects
// anew whenever its connection ends, and sends what was not answered again. Its pushes have no gap.
class OrderClients {
 public:
  struct Plan {
    std::function<uint16_t(size_t number)> port;  // `number` is the client's, plus one for each break
    std::string login;                            // the members of its login frame
    size_t clients = 4;
    size_t batch = 4;                            // new orders of a client under way
    std::chrono::milliseconds pause{20};         // between its batches
    std::chrono::milliseconds patience{10'000};  // for each answer
    bool mayHang = false;                        // a request without an answer is a break, and no failure
  };

  OrderClients(Plan plan, OrderTally& tally);
  ~OrderClients();
  OrderClients(const OrderClients&) = delete;
  OrderClients& operator=(const OrderClients&) = delete;

  // Waits until each client has had a batch answered. False if that takes too long.
  bool allAnswered();

  // Fails the test unless all acknowledged orders are there, no refused one is, and none is there twice.
  void checkOrders();

  void end();

 private:
  class Ledger;
  class Member;

  const Plan plan_;
  OrderTally& tally_;
  const std::unique_ptr<Ledger> ledger_;
  std::vector<std::unique_ptr<Member>> members_;
  std::atomic<bool> ended_ = false;
};

}  // namespace orvane::test
