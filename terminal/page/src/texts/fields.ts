import { returnToday, profitToday } from "../figures";
import { Capital, ClassRow, CreditFigures, Fill, MonitorRow, Order, Position } from "../wire/values";
import { currentLanguage } from "./texts";

// The figures that a list shows of a row when it is opened: member, how it is written, and its names.

export type Kind = "money" | "gain" | "percent" | "gainPercent" | "times" | "price" | "average" | "count" | "text";
export type Field<Row> = readonly [member: keyof Row | ((row: Row) => number), kind: Kind, zh: string, en: string];

export function fieldName<Row>(field: Field<Row>): string {
  return currentLanguage() === "zh" ? field[2] : field[3];
}

export function fieldValue<Row>(field: Field<Row>, row: Row): unknown {
  return typeof field[0] === "function" ? field[0](row) : row[field[0]];
}

export const kRisk: Field<Capital> = ["risk", "percent", "风险度", "Risk"];

export const kCapitalFields: readonly Field<Capital>[] = [
  ["dynamicAmount", "money", "动态权益", "Equity"],
  ["available", "money", "可用资金", "Available"],
  ["withdrawQuota", "money", "可取资金", "Withdrawable"],
  ["currMargin", "money", "占用保证金", "Margin used"],
  ["frozenMargin", "money", "冻结资金", "Frozen"],
  ["maintainAmount", "money", "维持资金", "Maintenance"],
  kRisk,
  ["todayFloatingProfit", "gain", "当日浮动盈亏", "Floating today"],
  ["closeProfit", "gain", "当日平仓盈亏", "Closed today"],
  [profitToday, "gain", "当日盈亏", "Today's profit"],
  [returnToday, "gainPercent", "当日收益率", "Today's return"],
  ["preCloseProfit", "gain", "较昨收变动（扣费后）", "Since the last close, after fees"],
  ["profitRatio", "gainPercent", "较昨收变动率", "The same as a share of capital"],
  ["netLever", "times", "净杠杆", "Net leverage"],
  ["totalLever", "times", "总杠杆", "Total leverage"],
  ["preBalance", "money", "昨日权益", "Previous balance"],
  ["lastAmount", "money", "最新资产", "Latest assets"],
  ["deposit", "money", "入金", "Deposits"],
  ["withdraw", "money", "出金", "Withdrawals"],
  ["commission", "money", "手续费", "Commission"],
];

export const kPositionFields: readonly Field<Position>[] = [
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
  ["todayProfitCateRatio", "gainPercent", "当日盈亏占品种", "Today's profit, of its class"],
  ["todayProfitAccRatio", "gainPercent", "当日盈亏占账户", "Today's profit, of the account"],
  ["margin", "money", "保证金", "Margin"],
  ["marginRate", "percent", "保证金率", "Margin rate"],
  ["totalMarketValue", "money", "总市值", "Market value"],
  [(row) => row.longMarketValue - row.shortMarketValue, "gain", "净市值", "Net market value"],
  ["netLever", "times", "净杠杆", "Net leverage"],
  ["totalLever", "times", "总杠杆", "Total leverage"],
  ["longPosition", "count", "多头", "Long"],
  ["longAvailableQuantity", "count", "多头可平", "Long closable"],
  ["longYesterdayVolume", "count", "多头昨仓", "Long, yesterday's"],
  ["longTodayVolume", "count", "多头今仓", "Long, today's"],
  ["longAvgPrice", "average", "多头均价", "Long average"],
  ["longFloatPorfit", "gain", "多头浮动盈亏", "Floating profit, long"],
  ["shortPosition", "count", "空头", "Short"],
  ["shortAvailableQuantity", "count", "空头可平", "Short closable"],
  ["shortYesterdayVolume", "count", "空头昨仓", "Short, yesterday's"],
  ["shortTodayVolume", "count", "空头今仓", "Short, today's"],
  ["shortAvgPrice", "average", "空头均价", "Short average"],
  ["shortFloatPorfit", "gain", "空头浮动盈亏", "Floating profit, short"],
];

export const kOrderFields: readonly Field<Order>[] = [
  ["orderId", "text", "交易所编号", "Exchange id"],
  ["localOrderId", "text", "本地编号", "Local id"],
  ["price", "price", "委托价格", "Price"],
  ["volume", "count", "委托数量", "Volume"],
  ["fillVolume", "count", "成交数量", "Filled"],
  ["fillAvgPrice", "average", "成交均价", "Average fill"],
  ["fillAmount", "money", "成交金额", "Value filled"],
  ["source", "text", "来源", "Source"],
  ["note", "text", "备注", "Note"],
];

export const kFillFields: readonly Field<Fill>[] = [
  ["fillId", "text", "成交编号", "Fill id"],
  ["localOrderId", "text", "本地编号", "Local id"],
  ["price", "price", "成交价格", "Price"],
  ["volume", "count", "成交数量", "Volume"],
  ["source", "text", "来源", "Source"],
];

export const kMonitorFields: readonly Field<MonitorRow>[] = [
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

export const kClassFields: readonly Field<ClassRow>[] = [
  ["totalMarketValue", "money", "总市值", "Market value"],
  ["leverWeight", "percent", "权重", "Weight"],
  ["todayProfit", "gain", "当日盈亏", "Today's profit"],
  ["profitRatio", "gainPercent", "当日收益率", "Today's return"],
  ["amassProfit", "gain", "浮动盈亏", "Floating profit"],
  ["amassProfitType", "gainPercent", "浮动收益率", "Floating return"],
  ["netAbsLever", "times", "净杠杆", "Net leverage"],
  ["totalLever", "times", "总杠杆", "Total leverage"],
];

export const kCreditFields: readonly Field<CreditFigures>[] = [
  ["totalAssets", "money", "总资产", "Total assets"],
  ["netAssets", "money", "净资产", "Net assets"],
  ["cashAssets", "money", "现金资产", "Cash"],
  ["freeBalance", "money", "可用余额", "Free balance"],
  ["marginAvl", "money", "保证金可用", "Margin available"],
  ["marginRatio", "percent", "维持担保比例", "Assets to debt"],
  ["keepMarginRatio", "percent", "最低担保比例", "Required assets to debt"],
  ["totalDebtBalance", "money", "总负债", "Total debt"],
  ["tradeDebtBalance", "money", "交易负债", "Trading debt"],
  ["debtInterest", "money", "利息", "Interest"],
  ["totalProfit", "gain", "浮动盈亏", "Floating profit"],
  ["longProfit", "gain", "多头浮动盈亏", "Floating profit, long"],
  ["shortProfit", "gain", "空头浮动盈亏", "Floating profit, short"],
  ["longDebtBalance", "money", "融资负债", "Money borrowed"],
  ["longMarginMarket", "money", "融资市值", "Bought on margin"],
  ["longMarginProfit", "gain", "融资浮动盈亏", "Floating profit of purchases"],
  ["longMarginUsed", "money", "融资占用保证金", "Margin of purchases"],
  ["longMarginRate", "percent", "融资保证金比例", "Margin rate, purchases"],
  ["longLimit", "money", "融资额度", "Limit for purchases"],
  ["longLimitUsed", "money", "融资已用额度", "Limit used"],
  ["longLimitAvl", "money", "融资可用额度", "Limit left"],
  ["shortDebtBalance", "money", "融券负债", "Securities borrowed"],
  ["shortMarginMarket", "money", "融券市值", "Value of securities borrowed"],
  ["shortMarginProfit", "gain", "融券浮动盈亏", "Floating profit of short sales"],
  ["shortMarginUsed", "money", "融券占用保证金", "Margin of short sales"],
  ["shortMarginRate", "percent", "融券保证金比例", "Margin rate, short sales"],
  ["shortLimit", "money", "融券额度", "Limit for short sales"],
  ["shortLimitUsed", "money", "融券已用额度", "Short limit used"],
  ["shortLimitAvl", "money", "融券可用额度", "Short limit left"],
];
