#include "serialise/codetext.h"

#include <cstdint>
#include <limits>

#include "host/baseinformation.h"
#include "host/codeservice.h"
#include "host/common.h"
#include "host/servicerouter.h"

namespace orvane {

std::string formatCodeKey(const SymbolCode& symbol) {
  std::string key = symbol.code + ".";
  const auto& names = gBaseInformationMap->exchangeNames;
  if (const auto name = names.find(symbol.exchangeId); name != names.end()) key += name->second;
  return key;
}

std::string instrumentName(const SymbolCode& symbol) {
  CodeProperty property;
  ICodeService* codes = IServiceRouter::instance()->getBaseService()->getCodeService();
  const ResultStatus found = codes->getCodeProperty(symbol, property, std::numeric_limits<int64_t>::max());
  if (found.code != 0 || property.codeName.empty()) return {};
  return CodeConvert::gbk_to_utf8(property.codeName);
}

}  // namespace orvane
