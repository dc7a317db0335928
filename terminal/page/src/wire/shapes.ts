// Written by terminal/page/write-wire from docs/schemas: do not edit.

import { Shape } from "./check";

export const kFrames: { readonly [name: string]: Shape } = {
  "request": { "id?": "any", topic: "text", "data?": "any", "terminalType?": "int", "key?": "text" },
  "login": { "id?": "any", topic: "=login", token: "text", "terminal?": "text", "device?": "text", "resume?": { epoch:
  "text", seq: "int" } },
  "reply": { id: "any", topic: "text", message: "text", data: "any" },
  "failure": { id: "any", topic: "text", message: "text", data: "null", "seen?": "text" },
  "text": { id: "any", topic: "text", message: "text", data: "null", text: "text" },
  "push": { seq: "int", topic: "text", message: "text", data: "any", "text?": "text" },
  "unnumbered": { topic: "=quote.push|alert.push", message: "text", data: "any" },
};

export const kReplies: { readonly [name: string]: Shape } = {
  "login": { name: "text", rights: ["=see|cancel|trade"], epoch: "text", seq: "int", resumed: "flag" },
  "account.list": [{ userCode: "text", index: "int", marketType: "int", triggerOrderPrivilege: "flag",
  ordinaryOrderPrivilege: "flag", accountStatus: "int" }],
  "capital.list": [{ userCode: "text", index: "int", accountType: "int", lastAmount: "number", profitRatio: "number",
  netLever: "number", preCloseProfit: "number", totalLever: "number", risk: "number", available: "number",
  todayFloatingProfit: "number", amassFloatingProfit: "number", closeProfit: "number", maintainAmount: "number",
  dynamicAmount: "number", preBalance: "number", withdrawQuota: "number", currMargin: "number", frozenMargin:
  "number", deposit: "number", withdraw: "number", commission: "number", accountStatus: "int" }],
  "position.list": [{ userCode: "text", index: "int", accountType: "int", codeExch: "text", hashCode: "int", netLever:
  "number", totalLever: "number", longLever: "number", shortLever: "number", netMarketValue: "number",
  totalMarketValue: "number", totalPosition: "int", longPosition: "int", longAvailableQuantity: "int", shortPosition:
  "int", shortAvailableQuantity: "int", aimType: "=未知|投机|套利|套保|市商|", codeType: "text", codeName: "text", code: "text",
  exchangeName: "text", todayProfitRatio: "number", todayProfitCateRatio: "number", todayProfitAccRatio: "number",
  amassProfitCateRatio: "number", amassProfitAccRatio: "number", historyCapitalFinalCost: "number", currentPrice:
  "number", preSettlementPrice: "number", preClosePrice: "number", longYesterdayVolume: "int",
  longCloseYesterdayVolume: "int", shortYesterdayVolume: "int", shortCloseYesterdayVolume: "int", margin: "number",
  todayPorfit: "number", floatPorfit: "number", avgPrice: "number", currentVolume: "int", yesterdayVolume: "int",
  longAvgPrice: "number", longMarketValue: "number", longFloatPorfit: "number", longTodayVolume: "number",
  shortAvgPrice: "number", shortMarketValue: "number", shortFloatPorfit: "number", shortTodayVolume: "number",
  marginRate: "number", accountStatus: "int" }],
  "position.codetype.list": [{ codeType: "text", netAbsLever: "number", totalLever: "number", leverWeight: "number",
  todayProfit: "number", profitRatio: "number", todayProfitType: "number", todayProfitAccount: "number", amassProfit:
  "number", amassProfitType: "number", amassProfitAccount: "number", totalMarketValue: "number" }],
  "order.list": [{ userCode: "text", index: "int", accountType: "int", codeExch: "text", hashCode: "int", codeName:
  "text", side: "int", combOffset: "int", hedge: "int", price: "number", volume: "int", srcTimestamp: "int",
  priceType: "int", orderId: "text", localOrderId: "text", status: "int", note: "text", source: "text", fillVolume:
  "int", fillAvgPrice: "number", fillAmount: "number", accountStatus: "int" }],
  "order.condition.list": "any",
  "trader.list": [{ userCode: "text", index: "int", accountType: "int", codeExch: "text", hashCode: "int", codeName:
  "text", side: "int", combOffset: "int", hedge: "int", price: "number", volume: "int", exchTimestamp: "int", fillId:
  "text", localOrderId: "text", source: "text", accountStatus: "int" }],
  "order.new": "null",
  "order.cancel": "null",
  "monitor.list": [{ userCode: "text", index: "int", codeExch: "text", hashCode: "int", codeType: "text",
  theoryPosDif: "int", longPosDif: "int", shortPosDif: "int", isMatchTheory: "flag", isMatchLongShort: "flag",
  isMatchNetPos: "flag", isMatchPosDif: "flag", systemNetPos: "int", systemLongPos: "int", systemShortPos: "int",
  strategyActiveNetPos: "int", strategyActiveLongPos: "int", strategyActiveShortPos: "int", strategyUnsendNetPos:
  "int", strategyUnsendLongPos: "int", strategyUnsendShortPos: "int", accountNetPos: "int", accountLongPos: "int",
  accountShortPos: "int", accountNetLever: "number", manualNetPos: "int", manualLongPos: "int", manualShortPos: "int",
  algoLongPos: "int", algoShortPos: "int", syncRule: "int", syncRuleDetail: "=多空单独|开平互转|净头寸", accountStatus: "int" }],
  "monitor.sync.order.list": [{ userCode: "text", index: "int", codeExch: "text", hashCode: "int", volume: "int",
  price: "number", side: "int", combOffsetFlag: "int", longPos: "int", shortPos: "int", netPos: "int", accountStatus:
  "int" }],
  "monitor.sync.order.new": "null",
  "monitor.manual.list": [{ userCode: "text", index: "int", codeExch: "text", hashCode: "int", longPos: "int",
  shortPos: "int", accountStatus: "int" }],
  "monitor.manual.update": "null",
  "monitor.manual.clean": "null",
  "marginrate.list": [{ index: "int", accountStatus: "int", rate: [{ hashCode: "int", marginRate: "number" }] }],
  "creditinfo.list": [{ index: "int", accountStatus: "int", creditInfo: [{ totalAssets: "number", netAssets: "number",
  cashAssets: "number", freeBalance: "number", longMarginRate: "number", shortMarginRate: "number", keepMarginRatio:
  "number", marginAvl: "number", marginRatio: "number", longProfit: "number", shortProfit: "number", totalProfit:
  "number", totalDebtBalance: "number", longDebtBalance: "number", shortDebtBalance: "number", debtInterest: "number",
  tradeDebtBalance: "number", longLimitAvl: "number", longLimitUsed: "number", longLimit: "number", longMarginMarket:
  "number", longMarginProfit: "number", longMarginUsed: "number", shortLimitAvl: "number", shortLimitUsed: "number",
  shortLimit: "number", shortMarginMarket: "number", shortMarginProfit: "number", shortMarginUsed: "number" }] }],
  "terminal.info": { name: "text", quotes: "=walk|still|replay", accounts: "int", instruments: "int", workingOrders:
  "int" },
  "quote.list": [{ hashCode: "int", codeExch: "text", codeName: "text", codeClass: "int", lastPrice: "number",
  bidPrice: "number", askPrice: "number", preClosePrice: "number", preSettlementPrice: "number", lowerLimit: "number",
  upperLimit: "number", priceTick: "number", volumeStep: "int", maxVolume: "int", multiplier: "int" }],
  "quote.curve": [{ hashCode: "int", start: "int", minutes: ["int"], prices: ["number"] }],
  "equity.list": [{ time: "int", day: "int", equity: "number", available: "number", margin: "number", profit:
  "number", deposit: "number", withdraw: "number" }],
  "order.rates": { longByMoney: "number", longByVolume: "number", shortByMoney: "number", shortByVolume: "number",
  commissionByMoney: "number", commissionByVolume: "number", commissionMinimum: "number", saleTax: "number" },
  "quote.set": "null",
  "quote.watch": [{ hashCode: "int", lastPrice: "number", bidPrice: "number", askPrice: "number" }],
  "alert.set": [{ id: "int", hashCode: "int", above: "flag", price: "number", made: "int", fired: "int", firedPrice:
  "number" }],
  "alert.list": [{ id: "int", hashCode: "int", above: "flag", price: "number", made: "int", fired: "int", firedPrice:
  "number" }],
  "alert.clear": [{ id: "int", hashCode: "int", above: "flag", price: "number", made: "int", fired: "int", firedPrice:
  "number" }],
};

export const kPushes: { readonly [name: string]: Shape } = {
  "order.push": [{ userCode: "text", index: "int", accountType: "int", codeExch: "text", hashCode: "int", codeName:
  "text", side: "int", combOffset: "int", hedge: "int", price: "number", volume: "int", srcTimestamp: "int",
  priceType: "int", orderId: "text", localOrderId: "text", status: "int", note: "text", source: "text", fillVolume:
  "int", fillAvgPrice: "number", fillAmount: "number", accountStatus: "int" }],
  "trade.push": [{ userCode: "text", index: "int", accountType: "int", codeExch: "text", hashCode: "int", codeName:
  "text", side: "int", combOffset: "int", hedge: "int", price: "number", volume: "int", exchTimestamp: "int", fillId:
  "text", localOrderId: "text", source: "text", accountStatus: "int" }],
  "quote.push": [{ hashCode: "int", lastPrice: "number", bidPrice: "number", askPrice: "number" }],
  "alert.push": [{ id: "int", hashCode: "int", above: "flag", price: "number", made: "int", fired: "int", firedPrice:
  "number" }],
  "terminal.notice": "null",
  "unknown.topic": "null",
};
