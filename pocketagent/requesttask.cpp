#include "pocketagent/requesttask.h"

#include <utility>

#include "host/authagent.h"
#include "host/codeservice.h"
#include "host/common.h"
#include "host/mobilesrv.h"
#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "host/uiproxymgr.h"
#include "pocketagent/log.h"

namespace orvane {

void IRequestTask::send(const MobileMessage& message) {
  const ResultStatus sent = IServiceRouter::instance()->getBaseService()->getMobileSrv()->send(message);
  if (sent.code != 0) {
    POCKET_ERROR("send error,RequestID=" + std::to_string(message.requestId) + ",Topic=" + message.topic +
                 ",TerminalType=" + std::to_string(message.terminalType) + ",msg=" + sent.message);
  }
}

bool IRequestTask::checkEntitlement() const {
  return sendRefusal(IAuthAgent::getInstance()->checkUser(topicName(topic)));
}

bool IRequestTask::checkEntitlement(const TradingAccountID& account) const {
  return sendRefusal(IAuthAgent::getInstance()->checkAccount(topicName(topic), account));
}

bool IRequestTask::sendRefusal(const ResultStatus& status) const {
  if (status.code != 0) reply(status);
  return status.code == 0;
}

MobileMessage IRequestTask::makeReply() const {
  MobileMessage message;
  message.requestId = requestId;
  message.topic = topicName(topic);
  return message;
}

void IRequestTask::reply(std::string data) const {
  MobileMessage message = makeReply();
  message.data = std::move(data);
  send(message);
}

void IRequestTask::reply(const ResultStatus& status) const {
  MobileMessage message = makeReply();
  if (status.code != 0) message.message = CodeConvert::gbk_to_utf8(status.message);
  send(message);
}

ResultStatus IRequestTask::findAccounts(const std::list<int32_t>& selector, std::vector<TradingAccountID>& accounts) {
  std::vector<TradingAccount> found;
  std::list<int32_t> availableIndexes;
  TradeUtils::getAllTradingAccount(IServiceRouter::instance()->getTradeService(), selector, kQueryList, found,
                                   availableIndexes);
  accounts.reserve(accounts.size() + found.size());
  for (TradingAccount& account : found) accounts.push_back(std::move(account.id));
  return {};
}

ResultStatus IRequestTask::findAccount(int32_t index, TradingAccountID& account) {
  std::vector<TradingAccount> found;
  std::list<int32_t> availableIndexes;
  TradeUtils::getAllTradingAccount(IServiceRouter::instance()->getTradeService(), std::list<int32_t>{index}, kQueryOne,
                                   found, availableIndexes);
  if (found.empty()) return {41, "get capital fail,orvquant inner error"};
  account = std::move(found.front().id);
  return {};
}

ResultStatus IRequestTask::findCode(int64_t hashCode, SymbolCode& symbol) {
  ICodeService* codes = IServiceRouter::instance()->getBaseService()->getCodeService();
  if (codes->getCodeByHash(hashCode, symbol).code != 0) {
    return {-1, "can not find code property by hashcode:" + std::to_string(hashCode)};
  }
  return {};
}

ResultStatus IRequestTask::findCodeType(int64_t hashCode, std::string& typeText, std::string& nameText) {
  std::string type;
  std::string name;
  if (!IUIProxyMgr::getInstance()->getCodeTypeName(hashCode, type, name)) {
    return {-1, "can not find code type by hashcode:" + std::to_string(hashCode)};
  }
  typeText = CodeConvert::gbk_to_utf8(type);
  nameText = CodeConvert::gbk_to_utf8(name);
  return {};
}

}  // namespace orvane
