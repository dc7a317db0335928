#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "terminal/trading/engine.h"
#include "terminal/trading/tradingoptions.h"

namespace orvane::terminal {

// One line of a quote file.
struct ReplayedPrice {
  std::chrono::milliseconds time;  // since the feed's start
  Price price;
};

// Reads a quote file: lines of "milliseconds,instrument,price", such as "1500,rb2701.SHFE,3326", in ascending time;
// empty lines and lines that begin with '#' are skipped. Throws std::runtime_error that names the file and, if a line
// is invalid, its number.
std::vector<ReplayedPrice> readQuoteFile(const std::filesystem::path& file, const Book& book);

// Moves the prices on its own thread, as the options say.
class QuoteFeed {
 public:
  // Throws like readQuoteFile.
  QuoteFeed(Desk& desk, Engine& engine, const TradingOptions& options);
  ~QuoteFeed() { stop(); }

  // REQUIRES: not started.
  void start();

  // Stores the prices of a random walk. Does nothing if not started.
  void stop();

  // Time since the last step of the random walk; nothing in the other modes. Any thread.
  std::optional<std::chrono::duration<double>> age() const;

 private:
  void walk();
  void replay();
  void step(bool store);
  bool sleepUntil(std::chrono::steady_clock::time_point time);
  void move(const std::vector<Price>& prices, bool store);

  Desk& desk_;
  Engine& engine_;
  QuoteMode mode_;
  std::mt19937_64 random_;
  std::vector<ReplayedPrice> replayed_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool running_ = false;
  std::atomic<std::chrono::steady_clock::time_point> moved_ = std::chrono::steady_clock::now();
  std::thread thread_;
};

}  // namespace orvane::terminal
