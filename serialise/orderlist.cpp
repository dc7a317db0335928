#include "serialise/orderlist.h"

#include "host/common.h"
#include "serialise/codetext.h"
#include "serialise/ordersource.h"
#include "serialise/replywriter.h"
#include "serialise/rowhead.h"

namespace orvane {

std::string serializeOrderList(const std::list<Order>& orders) {
  return writeRows(orders, [](ReplyWriter& row, const Order& order) {
    writeHead(row, order.account);
    row.member("codeExch", formatCodeKey(order.code));
    row.member("hashCode", order.code.hashCode);
    row.member("codeName", instrumentName(order.code));
    row.member("side", order.side);
    row.member("combOffset", order.combOffset);
    row.member("hedge", order.hedge);
    row.member("price", order.price);
    row.member("volume", order.volume);
    row.member("srcTimestamp", order.srcTimestamp);
    row.member("priceType", order.priceType);
    row.member("orderId", order.orderId);
    row.member("localOrderId", std::to_string(order.localOrderId));  // a string, as "order.cancel" expects it
    row.member("status", order.status);
    row.member("note", CodeConvert::gbk_to_utf8(order.note));
    row.member("source", CodeConvert::gbk_to_utf8(formatOrderSource(order.orderSource)));
    row.member("fillVolume", order.fillVolume);
    row.member("fillAvgPrice", order.fillAvgPrice);
    row.member("fillAmount", order.fillAmount);
    row.member("accountStatus", 1);
  });
}

}  // namespace orvane
