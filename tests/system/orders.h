#pragma once

#include <string>

#include <fmt/format.h>

namespace orvane::test {

// The body of "order.new" for one lot of account 1, told apart by its source.
inline std::string orderData(const std::string& source) {
  return fmt::format(R"({{"orderList":[{{"index":1,"hashCode":2000001,"side":1,"combOffset":1,"priceType":1,)"
                     R"("price":2840,"offset":0,"volume":1,"insertTimestamp":1,"source":"{}"}}]}})",
                     source);
}

// The request for it, whose key and id are its source.
inline std::string orderFrame(const std::string& key) {
  return fmt::format(R"({{"id":"{0}","topic":"order.new","key":"{0}","data":{1}}})", key, orderData(key));
}

}  // namespace orvane::test
