#include "pocketagent/frametasks.h"

#include "host/common.h"
#include "host/uiproxymgr.h"

namespace orvane {

namespace {

constexpr int32_t kSynchronous = 16;  // bit of the terminal type

}  // namespace

void ErrorReqTask::execute() { reply(ResultStatus{-1, error}); }

void CondOrderListTask::execute() {
  MobileMessage message = makeReply();
  message.topic = topicName(kTopicCondOrderList);
  message.message = "暂不支持条件单";  // UTF-8 already
  send(message);
}

void UIRequestTask::execute() {
  if (!checkEntitlement()) return;
  if ((terminalType & kSynchronous) == 0) {
    IUIProxyMgr::getInstance()->requestAsync(requestId, topicText, data);
    return;
  }
  MobileMessage message;
  IUIProxyMgr::getInstance()->requestSync(topicText, data, message);
  message.requestId = requestId;
  message.message = CodeConvert::gbk_to_utf8(message.message);
  message.data = CodeConvert::gbk_to_utf8(message.data);
  message.terminalType = kReplyTerminalType;
  send(message);
}

void PushNotifyListTask::execute() {
  if (!checkEntitlement()) return;
  message.data = CodeConvert::gbk_to_utf8(message.data);
  message.message = CodeConvert::gbk_to_utf8(message.message);
  send(message);
}

}  // namespace orvane
