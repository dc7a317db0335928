#include "terminal/trading/quotefeed.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

constexpr std::chrono::milliseconds kStep{500};
constexpr int kStepsPerStore = 20;

class QuoteFile {
 public:
  QuoteFile(std::filesystem::path file, const Book& book) : file_(std::move(file)) {
    for (const auto& [hashCode, instrument] : book.instruments) {
      instruments_.emplace(codeKey(book, instrument.symbol), &instrument);
    }
  }

  std::vector<ReplayedPrice> read() {
    std::ifstream input(file_);
    if (!input) failToRead();
    std::vector<ReplayedPrice> prices;
    for (std::string text; std::getline(input, text);) {
      ++line_;
      if (text.ends_with('\r')) text.pop_back();
      if (text.empty() || text.front() == '#') continue;
      prices.push_back(parse(text));
      if (prices.size() > 1 && prices.back().time < prices[prices.size() - 2].time) fail("times must not go back");
    }
    if (input.bad()) failToRead();
    if (prices.empty()) fail("holds no price");
    return prices;
  }

 private:
  ReplayedPrice parse(std::string_view text) const {
    const size_t first = text.find(',');
    const size_t second = text.find(',', first == std::string_view::npos ? first : first + 1);
    if (second == std::string_view::npos) fail("expected milliseconds,instrument,price");
    const auto millis = number<int64_t>(text.substr(0, first), "milliseconds");
    if (millis < 0) fail("milliseconds must not be negative");
    const std::string name(text.substr(first + 1, second - first - 1));
    auto found = instruments_.find(name);
    if (found == instruments_.end()) fail(fmt::format("unknown instrument {}", name));
    const Instrument& instrument = *found->second;
    const auto price = number<double>(text.substr(second + 1), "price");
    if (!(price >= instrument.lowerLimit && price <= instrument.upperLimit)) {
      fail(fmt::format("price {} is outside {} to {}", price, instrument.lowerLimit, instrument.upperLimit));
    }
    return {std::chrono::milliseconds(millis), {instrument.symbol.hashCode, roundToTick(price, instrument.priceTick)}};
  }

  template <typename Number>
  Number number(std::string_view text, const char* what) const {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) fail(fmt::format("bad {}: {}", what, text));
    return value;
  }

  [[noreturn]] void failToRead() const {
    throw std::runtime_error(
        fmt::format("quote file {} cannot be read: {}; give the path of a quote file with --quotes", file_.string(),
                    std::generic_category().message(errno)));
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw std::runtime_error(fmt::format("quote file {}, line {}: {}", file_.string(), line_, what));
  }

  std::filesystem::path file_;
  std::map<std::string, const Instrument*> instruments_;
  int line_ = 0;
};

}  // namespace

std::vector<ReplayedPrice> readQuoteFile(const std::filesystem::path& file, const Book& book) {
  return QuoteFile(file, book).read();
}

QuoteFeed::QuoteFeed(Desk& desk, Engine& engine, const TradingOptions& options)
    : desk_(desk), engine_(engine), mode_(options.quotes), random_(options.seed) {
  if (mode_ == QuoteMode::Replay) {
    replayed_ = desk_.read([&](const Book& book) { return readQuoteFile(options.quoteFile, book); });
  }
}

void QuoteFeed::start() {
  running_ = true;
  if (mode_ == QuoteMode::Walk) thread_ = std::thread([this] { walk(); });
  if (mode_ == QuoteMode::Replay) thread_ = std::thread([this] { replay(); });
}

void QuoteFeed::stop() {
  {
    const std::lock_guard lock(mutex_);
    running_ = false;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

std::optional<std::chrono::duration<double>> QuoteFeed::age() const {
  if (mode_ != QuoteMode::Walk) return std::nullopt;
  return std::chrono::steady_clock::now() - moved_.load();
}

// False if the feed was stopped meanwhile.
bool QuoteFeed::sleepUntil(std::chrono::steady_clock::time_point time) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_until(lock, time, [this] { return !running_; });
}

void QuoteFeed::walk() {
  auto next = std::chrono::steady_clock::now();
  for (int count = 1; sleepUntil(next += kStep); ++count) step(count % kStepsPerStore == 0);
  step(true);
}

// Each price moves one tick up or down or not at all, within its limits.
void QuoteFeed::step(bool store) {
  std::uniform_int_distribution<int> direction(-1, 1);
  const std::vector<Price> prices = desk_.read([&](const Book& book) {
    std::vector<Price> moved;
    moved.reserve(book.instruments.size());
    for (const auto& [hashCode, it] : book.instruments) {
      const double price = roundToTick(it.last + direction(random_) * it.priceTick, it.priceTick);
      moved.emplace_back(hashCode, std::clamp(price, it.lowerLimit, it.upperLimit));
    }
    return moved;
  });
  move(prices, store);
}

void QuoteFeed::replay() {
  const auto begin = std::chrono::steady_clock::now();
  for (const ReplayedPrice& it : replayed_) {
    if (!sleepUntil(begin + it.time)) return;
    move({it.price}, true);
  }
}

// While the database cannot be written the prices stay as they are: the fills that they make could not be stored. The
// desk reports it.
void QuoteFeed::move(const std::vector<Price>& prices, bool store) {
  if (!desk_.storageFault().empty()) return;
  try {
    engine_.movePrices(prices, store);
  } catch (const StoreError&) {  // it failed just now
    return;
  }
  moved_ = std::chrono::steady_clock::now();
}

}  // namespace orvane::terminal
