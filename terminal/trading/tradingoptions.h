#pragma once

#include <cstdint>
#include <filesystem>

namespace orvane::terminal {

// Walk: a seeded random walk on the ticks. Still: prices move by "quote.set" alone. Replay: prices from a file.
enum class QuoteMode { Walk, Still, Replay };

struct TradingOptions {
  std::filesystem::path dataDir;  // created if missing; holds terminal.db
  QuoteMode quotes = QuoteMode::Walk;
  std::filesystem::path quoteFile;  // for Replay
  uint64_t seed = 1;                // for Walk
};

}  // namespace orvane::terminal
