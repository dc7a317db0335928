#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/mobilemessage.h"
#include "tests/trading/secondbook.h"

namespace orvane::terminal::testing {

// A row as clients get it: its members as texts in UTF-8, numbers with four digits.
using Row = std::map<std::string, std::string>;

// Texts of the records are UTF-8.
Row rowOf(const Order& it, const second::SecondBook& book);
Row rowOf(const OrderFill& it, const second::SecondBook& book);
Row rowOf(int64_t hash, const second::Instrument& it);

// The rows of a message in GBK. Fails the test if it holds none.
std::vector<Row> rowsOf(const MobileMessage& message);

}  // namespace orvane::terminal::testing
