import { currentLanguage } from "./texts";

// The figures that a list shows of each row when it is opened: member, how it is written, and its names.

export type Kind = "money" | "gain" | "percent" | "gainPercent" | "times" | "price" | "average" | "count" | "text";
export type Field = readonly [member: string, kind: Kind, zh: string, en: string];

export function fieldName(field: Field): string {
  return currentLanguage() === "zh" ? field[2] : field[3];
}

export const kRisk: Field = ["risk", "percent", "风险度", "Risk"];

export const kCapitalFields: readonly Field[] = [
  ["dynamicAmount", "money", "动态权益", "Equity"],
  ["available", "money", "可用资金", "Available"],
  ["withdrawQuota", "money", "可取资金", "Withdrawable"],
  ["currMargin", "money", "占用保证金", "Margin used"],
  ["frozenMargin", "money", "冻结资金", "Frozen"],
  ["maintainAmount", "money", "维持资金", "Maintenance"],
  kRisk,
  ["todayFloatingProfit", "gain", "当日浮动盈亏", "Floating today"],
  ["closeProfit", "gain", "平仓盈亏", "Closed today"],
  ["preCloseProfit", "gain", "当日盈亏（昨收）", "Profit against last close"],
  ["profitRatio", "gainPercent", "收益率", "Return"],
  ["netLever", "times", "净杠杆", "Net leverage"],
  ["totalLever", "times", "总杠杆", "Total leverage"],
  ["preBalance", "money", "昨日权益", "Previous balance"],
  ["lastAmount", "money", "最新资产", "Last amount"],
  ["deposit", "money", "入金", "Paid in"],
  ["withdraw", "money", "出金", "Paid out"],
  ["commission", "money", "手续费", "Commission"],
];

export const kPositionFields: readonly Field[] = [
  ["exchangeName", "text", "交易所", "Exchange"],
  ["codeType", "text", "品种", "Class"],
  ["aimType", "text", "用途", "Purpose"],
  ["currentPrice", "price", "最新价", "Last price"],
  ["preClosePrice", "price", "昨收价", "Previous close"],
  ["preSettlementPrice", "price", "昨结算价", "Previous settlement"],
  ["avgPrice", "average", "均价", "Average price"],
  ["floatPorfit", "gain", "浮动盈亏", "Floating profit"],
  ["todayPorfit", "gain", "当日盈亏", "Today's profit"],
  ["todayProfitRatio", "gainPercent", "当日收益率", "Today's return"],
  ["todayProfitCateRatio", "gainPercent", "占品种比", "Of the class"],
  ["todayProfitAccRatio", "gainPercent", "占账户比", "Of the account"],
  ["margin", "money", "保证金", "Margin"],
  ["marginRate", "percent", "保证金率", "Margin rate"],
  ["totalMarketValue", "money", "总市值", "Market value"],
  ["netMarketValue", "money", "净市值", "Net market value"],
  ["netLever", "times", "净杠杆", "Net leverage"],
  ["totalLever", "times", "总杠杆", "Total leverage"],
  ["longPosition", "count", "多头", "Long"],
  ["longAvailableQuantity", "count", "多头可平", "Long closable"],
  ["longYesterdayVolume", "count", "多头昨仓", "Long, yesterday's"],
  ["longTodayVolume", "count", "多头今仓", "Long, today's"],
  ["longAvgPrice", "average", "多头均价", "Long average"],
  ["longFloatPorfit", "gain", "多头浮盈", "Long floating"],
  ["shortPosition", "count", "空头", "Short"],
  ["shortAvailableQuantity", "count", "空头可平", "Short closable"],
  ["shortYesterdayVolume", "count", "空头昨仓", "Short, yesterday's"],
  ["shortTodayVolume", "count", "空头今仓", "Short, today's"],
  ["shortAvgPrice", "average", "空头均价", "Short average"],
  ["shortFloatPorfit", "gain", "空头浮盈", "Short floating"],
];

export const kOrderFields: readonly Field[] = [
  ["orderId", "text", "交易所编号", "Exchange's id"],
  ["localOrderId", "text", "本地编号", "Local id"],
  ["price", "price", "委托价格", "Price"],
  ["volume", "count", "委托数量", "Volume"],
  ["fillVolume", "count", "成交数量", "Filled"],
  ["fillAvgPrice", "average", "成交均价", "Average fill"],
  ["fillAmount", "money", "成交金额", "Value filled"],
  ["source", "text", "来源", "Source"],
  ["note", "text", "备注", "Note"],
];

export const kFillFields: readonly Field[] = [
  ["fillId", "text", "成交编号", "Fill id"],
  ["localOrderId", "text", "本地编号", "Local id"],
  ["price", "price", "成交价格", "Price"],
  ["volume", "count", "成交数量", "Volume"],
  ["source", "text", "来源", "Source"],
];

export const kMonitorFields: readonly Field[] = [
  ["codeType", "text", "品种", "Class"],
  ["syncRuleDetail", "text", "同步规则", "Rule"],
  ["systemLongPos", "count", "目标多", "Target long"],
  ["systemShortPos", "count", "目标空", "Target short"],
  ["systemNetPos", "count", "目标净", "Target net"],
  ["accountLongPos", "count", "持有多", "Held long"],
  ["accountShortPos", "count", "持有空", "Held short"],
  ["accountNetPos", "count", "持有净", "Held net"],
  ["longPosDif", "count", "多头差", "Long difference"],
  ["shortPosDif", "count", "空头差", "Short difference"],
  ["theoryPosDif", "count", "理论差", "Theory difference"],
  ["strategyActiveLongPos", "count", "策略多", "Strategies long"],
  ["strategyActiveShortPos", "count", "策略空", "Strategies short"],
  ["strategyUnsendLongPos", "count", "未发策略多", "Unsent long"],
  ["strategyUnsendShortPos", "count", "未发策略空", "Unsent short"],
  ["algoLongPos", "count", "算法多", "Algorithms long"],
  ["algoShortPos", "count", "算法空", "Algorithms short"],
  ["manualLongPos", "count", "手工多", "Manual long"],
  ["manualShortPos", "count", "手工空", "Manual short"],
  ["accountNetLever", "times", "净杠杆", "Net leverage"],
];

export const kClassFields: readonly Field[] = [
  ["totalMarketValue", "money", "总市值", "Market value"],
  ["leverWeight", "percent", "权重", "Weight"],
  ["todayProfit", "gain", "当日盈亏", "Today's profit"],
  ["profitRatio", "gainPercent", "当日收益率", "Today's return"],
  ["amassProfit", "gain", "累计盈亏", "Profit since opening"],
  ["amassProfitType", "gainPercent", "累计收益率", "Return since opening"],
  ["netAbsLever", "times", "净杠杆", "Net leverage"],
  ["totalLever", "times", "总杠杆", "Total leverage"],
];

export const kCreditFields: readonly Field[] = [
  ["totalAssets", "money", "总资产", "Total assets"],
  ["netAssets", "money", "净资产", "Net assets"],
  ["cashAssets", "money", "现金资产", "Cash"],
  ["freeBalance", "money", "可用余额", "Free balance"],
  ["marginAvl", "money", "保证金可用", "Margin available"],
  ["marginRatio", "percent", "维持担保比例", "Assets to debt"],
  ["keepMarginRatio", "percent", "最低担保比例", "Least assets to debt"],
  ["totalDebtBalance", "money", "总负债", "Total debt"],
  ["tradeDebtBalance", "money", "交易负债", "Debt by trades"],
  ["debtInterest", "money", "利息", "Interest"],
  ["totalProfit", "gain", "总浮动盈亏", "Floating profit"],
  ["longProfit", "gain", "多头盈亏", "Long profit"],
  ["shortProfit", "gain", "空头盈亏", "Short profit"],
  ["longDebtBalance", "money", "融资负债", "Money borrowed"],
  ["longMarginMarket", "money", "融资市值", "Bought with it"],
  ["longMarginProfit", "gain", "融资盈亏", "Margin purchase profit"],
  ["longMarginUsed", "money", "融资占用保证金", "Margin of purchases"],
  ["longMarginRate", "percent", "融资保证金比例", "Margin rate, purchases"],
  ["longLimit", "money", "融资额度", "Limit of purchases"],
  ["longLimitUsed", "money", "融资已用额度", "Limit used"],
  ["longLimitAvl", "money", "融资可用额度", "Limit left"],
  ["shortDebtBalance", "money", "融券负债", "Securities borrowed"],
  ["shortMarginMarket", "money", "融券市值", "Their market value"],
  ["shortMarginProfit", "gain", "融券盈亏", "Short sale profit"],
  ["shortMarginUsed", "money", "融券占用保证金", "Margin of short sales"],
  ["shortMarginRate", "percent", "融券保证金比例", "Margin rate, short sales"],
  ["shortLimit", "money", "融券额度", "Limit of short sales"],
  ["shortLimitUsed", "money", "融券已用额度", "Short limit used"],
  ["shortLimitAvl", "money", "融券可用额度", "Short limit left"],
];
