#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

// The host's identification of an instrument.
struct SymbolCode {
  int64_t hashCode = 0;  // assigned by the host, any value; opaque to the library

  // 0: only volume held since before today can be closed. 1: "marginrate.list" has a rate.
  int32_t codeClass = -1;

  int32_t exchangeId = -1;  // a key of BaseInformationMap
  std::string code;         // such as "rb2405"; sent to clients byte for byte
};

// The host's properties of an instrument. The library reads only `codeName`.
struct CodeProperty {
  int64_t reserved1 = 11;
  int64_t reserved2 = 0;
  std::array<int32_t, 2> reserved3{1, 1};
  int64_t reserved5 = 1;
  std::array<int64_t, 5> reserved6{};
  std::array<int64_t, 2> reserved11{};
  int32_t reserved13 = 4;
  std::array<std::string, 2> reserved14;
  std::array<int64_t, 2> reserved16{};
  std::vector<int64_t> reserved18;
  SymbolCode symbol;
  std::string codeName;  // display name, GBK, may be empty
  std::array<std::string, 2> reserved21;
  int32_t reserved23 = 4;
  std::string reserved24;
};

}  // namespace orvane
