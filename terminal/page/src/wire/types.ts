// Written by terminal/page/write-wire from docs/schemas: do not edit.

export interface FrameRequest {
  id?: string | number; topic: string; data?: unknown; terminalType?: number; key?: string;
}

export interface FrameLogin {
  id?: string | number; topic: "login"; token: string; terminal?: string; device?: string; resume?: { epoch: string;
  seq: number };
}

export interface FrameReply {
  id: string | number | null; topic: string; message: string; data: unknown;
}

export interface FrameFailure {
  id: string | number | null; topic: string; message: string; data: null; seen?: string;
}

export interface FrameText {
  id: string | number | null; topic: string; message: string; data: null; text: string;
}

export interface FramePush {
  seq: number; topic: string; message: string; data: unknown; text?: string;
}

export interface FrameUnnumbered {
  topic: "quote.push" | "alert.push"; message: string; data: unknown;
}

export interface Login {
  name: string; rights: ("see" | "cancel" | "trade")[]; epoch: string; seq: number; resumed: boolean;
}

export interface AccountListRow {
  userCode: string; index: number; marketType: number; triggerOrderPrivilege: boolean; ordinaryOrderPrivilege:
  boolean; accountStatus: number;
}

export interface CapitalListRow {
  userCode: string; index: number; accountType: number; lastAmount: number; profitRatio: number; netLever: number;
  preCloseProfit: number; totalLever: number; risk: number; available: number; todayFloatingProfit: number;
  amassFloatingProfit: number; closeProfit: number; maintainAmount: number; dynamicAmount: number; preBalance: number;
  withdrawQuota: number; currMargin: number; frozenMargin: number; deposit: number; withdraw: number; commission:
  number; accountStatus: number;
}

export interface PositionListRow {
  userCode: string; index: number; accountType: number; codeExch: string; hashCode: number; netLever: number;
  totalLever: number; longLever: number; shortLever: number; netMarketValue: number; totalMarketValue: number;
  totalPosition: number; longPosition: number; longAvailableQuantity: number; shortPosition: number;
  shortAvailableQuantity: number; aimType: "未知" | "投机" | "套利" | "套保" | "市商" | ""; codeType: string; codeName: string;
  code: string; exchangeName: string; todayProfitRatio: number; todayProfitCateRatio: number; todayProfitAccRatio:
  number; amassProfitCateRatio: number; amassProfitAccRatio: number; historyCapitalFinalCost: number; currentPrice:
  number; preSettlementPrice: number; preClosePrice: number; longYesterdayVolume: number; longCloseYesterdayVolume:
  number; shortYesterdayVolume: number; shortCloseYesterdayVolume: number; margin: number; todayPorfit: number;
  floatPorfit: number; avgPrice: number; currentVolume: number; yesterdayVolume: number; longAvgPrice: number;
  longMarketValue: number; longFloatPorfit: number; longTodayVolume: number; shortAvgPrice: number; shortMarketValue:
  number; shortFloatPorfit: number; shortTodayVolume: number; marginRate: number; accountStatus: number;
}

export interface PositionCodetypeListRow {
  codeType: string; netAbsLever: number; totalLever: number; leverWeight: number; todayProfit: number; profitRatio:
  number; todayProfitType: number; todayProfitAccount: number; amassProfit: number; amassProfitType: number;
  amassProfitAccount: number; totalMarketValue: number;
}

export interface OrderListRow {
  userCode: string; index: number; accountType: number; codeExch: string; hashCode: number; codeName: string; side:
  number; combOffset: number; hedge: number; price: number; volume: number; srcTimestamp: number; priceType: number;
  orderId: string; localOrderId: string; status: number; note: string; source: string; fillVolume: number;
  fillAvgPrice: number; fillAmount: number; accountStatus: number;
}

export interface TraderListRow {
  userCode: string; index: number; accountType: number; codeExch: string; hashCode: number; codeName: string; side:
  number; combOffset: number; hedge: number; price: number; volume: number; exchTimestamp: number; fillId: string;
  localOrderId: string; source: string; accountStatus: number;
}

export interface OrderNewBody {
  orderList: { index: number; hashCode: number; side: number; combOffset: number; priceType: number; price: number;
  offset: number; volume: number; insertTimestamp: number; source: string; instructionType?: number; orderType?:
  number }[];
}

export interface OrderCancelBodyRow {
  index: number; localOrderId: string; hashCode: number; strategyId?: string;
}

export interface MonitorListRow {
  userCode: string; index: number; codeExch: string; hashCode: number; codeType: string; theoryPosDif: number;
  longPosDif: number; shortPosDif: number; isMatchTheory: boolean; isMatchLongShort: boolean; isMatchNetPos: boolean;
  isMatchPosDif: boolean; systemNetPos: number; systemLongPos: number; systemShortPos: number; strategyActiveNetPos:
  number; strategyActiveLongPos: number; strategyActiveShortPos: number; strategyUnsendNetPos: number;
  strategyUnsendLongPos: number; strategyUnsendShortPos: number; accountNetPos: number; accountLongPos: number;
  accountShortPos: number; accountNetLever: number; manualNetPos: number; manualLongPos: number; manualShortPos:
  number; algoLongPos: number; algoShortPos: number; syncRule: number; syncRuleDetail: "多空单独" | "开平互转" | "净头寸";
  accountStatus: number;
}

export interface MonitorSyncOrderListBodyRow {
  index: number; hashCode: number;
}

export interface MonitorSyncOrderListRow {
  userCode: string; index: number; codeExch: string; hashCode: number; volume: number; price: number; side: number;
  combOffsetFlag: number; longPos: number; shortPos: number; netPos: number; accountStatus: number;
}

export interface MonitorSyncOrderNewBodyRow {
  index: number; hashCode: number; volume: number; price: number; side: number; combOffsetFlag: number;
}

export interface MonitorManualListBodyRow {
  index: number; hashCode: number;
}

export interface MonitorManualListRow {
  userCode: string; index: number; codeExch: string; hashCode: number; longPos: number; shortPos: number;
  accountStatus: number;
}

export interface MonitorManualUpdateBodyRow {
  index: number; hashCode: number; longPos: number; shortPos: number;
}

export interface MonitorManualCleanBodyRow {
  index: number; hashCode: number;
}

export interface MarginrateListBodyRow {
  index: number; hashCodes: number[];
}

export interface MarginrateListRow {
  index: number; accountStatus: number; rate: { hashCode: number; marginRate: number }[];
}

export interface CreditinfoListRow {
  index: number; accountStatus: number; creditInfo: { totalAssets: number; netAssets: number; cashAssets: number;
  freeBalance: number; longMarginRate: number; shortMarginRate: number; keepMarginRatio: number; marginAvl: number;
  marginRatio: number; longProfit: number; shortProfit: number; totalProfit: number; totalDebtBalance: number;
  longDebtBalance: number; shortDebtBalance: number; debtInterest: number; tradeDebtBalance: number; longLimitAvl:
  number; longLimitUsed: number; longLimit: number; longMarginMarket: number; longMarginProfit: number;
  longMarginUsed: number; shortLimitAvl: number; shortLimitUsed: number; shortLimit: number; shortMarginMarket:
  number; shortMarginProfit: number; shortMarginUsed: number }[];
}

export interface TerminalInfo {
  name: string; quotes: "walk" | "still" | "replay"; accounts: number; instruments: number; workingOrders: number;
}

export interface QuoteListRow {
  hashCode: number; codeExch: string; codeName: string; codeClass: number; lastPrice: number; bidPrice: number;
  askPrice: number; preClosePrice: number; preSettlementPrice: number; lowerLimit: number; upperLimit: number;
  priceTick: number; volumeStep: number; maxVolume: number; multiplier: number;
}

export interface QuoteCurveBody {
  hashCodes: number[]; points: number;
}

export interface QuoteCurveRow {
  hashCode: number; start: number; minutes: number[]; prices: number[];
}

export interface EquityListBody {
  index: number; from: number; to: number; points: number;
}

export interface EquityListRow {
  time: number; day: number; equity: number; available: number; margin: number; profit: number; deposit: number;
  withdraw: number;
}

export interface OrderRatesBody {
  index: number; hashCode: number;
}

export interface OrderRates {
  longByMoney: number; longByVolume: number; shortByMoney: number; shortByVolume: number; commissionByMoney: number;
  commissionByVolume: number; commissionMinimum: number; saleTax: number;
}

export interface QuoteSetBody {
  hashCode: number; price: number;
}

export interface QuoteWatchRow {
  hashCode: number; lastPrice: number; bidPrice: number; askPrice: number;
}

export interface AlertSetBody {
  hashCode: number; above: boolean; price: number;
}

export interface AlertSetRow {
  id: number; hashCode: number; above: boolean; price: number; made: number; fired: number; firedPrice: number;
}

export interface AlertListRow {
  id: number; hashCode: number; above: boolean; price: number; made: number; fired: number; firedPrice: number;
}

export interface AlertClearRow {
  id: number; hashCode: number; above: boolean; price: number; made: number; fired: number; firedPrice: number;
}

export interface OrderPushRow {
  userCode: string; index: number; accountType: number; codeExch: string; hashCode: number; codeName: string; side:
  number; combOffset: number; hedge: number; price: number; volume: number; srcTimestamp: number; priceType: number;
  orderId: string; localOrderId: string; status: number; note: string; source: string; fillVolume: number;
  fillAvgPrice: number; fillAmount: number; accountStatus: number;
}

export interface TradePushRow {
  userCode: string; index: number; accountType: number; codeExch: string; hashCode: number; codeName: string; side:
  number; combOffset: number; hedge: number; price: number; volume: number; exchTimestamp: number; fillId: string;
  localOrderId: string; source: string; accountStatus: number;
}

export interface QuotePushRow {
  hashCode: number; lastPrice: number; bidPrice: number; askPrice: number;
}

export interface AlertPushRow {
  id: number; hashCode: number; above: boolean; price: number; made: number; fired: number; firedPrice: number;
}

export interface Bodies {
  "account.list": unknown;
  "capital.list": number[];
  "position.list": number[];
  "position.codetype.list": number[];
  "order.list": number[];
  "order.condition.list": unknown;
  "trader.list": number[];
  "order.new": OrderNewBody;
  "order.cancel": OrderCancelBodyRow[];
  "monitor.list": number[];
  "monitor.sync.order.list": MonitorSyncOrderListBodyRow[];
  "monitor.sync.order.new": MonitorSyncOrderNewBodyRow[];
  "monitor.manual.list": MonitorManualListBodyRow[];
  "monitor.manual.update": MonitorManualUpdateBodyRow[];
  "monitor.manual.clean": MonitorManualCleanBodyRow[];
  "marginrate.list": MarginrateListBodyRow[];
  "creditinfo.list": number[];
  "terminal.info": unknown;
  "quote.list": unknown;
  "quote.curve": QuoteCurveBody;
  "equity.list": EquityListBody;
  "order.rates": OrderRatesBody;
  "quote.set": QuoteSetBody;
  "quote.watch": number[];
  "alert.set": AlertSetBody;
  "alert.list": unknown;
  "alert.clear": number[];
}

export interface Replies {
  "login": Login;
  "account.list": AccountListRow[];
  "capital.list": CapitalListRow[];
  "position.list": PositionListRow[];
  "position.codetype.list": PositionCodetypeListRow[];
  "order.list": OrderListRow[];
  "order.condition.list": unknown;
  "trader.list": TraderListRow[];
  "order.new": null;
  "order.cancel": null;
  "monitor.list": MonitorListRow[];
  "monitor.sync.order.list": MonitorSyncOrderListRow[];
  "monitor.sync.order.new": null;
  "monitor.manual.list": MonitorManualListRow[];
  "monitor.manual.update": null;
  "monitor.manual.clean": null;
  "marginrate.list": MarginrateListRow[];
  "creditinfo.list": CreditinfoListRow[];
  "terminal.info": TerminalInfo;
  "quote.list": QuoteListRow[];
  "quote.curve": QuoteCurveRow[];
  "equity.list": EquityListRow[];
  "order.rates": OrderRates;
  "quote.set": null;
  "quote.watch": QuoteWatchRow[];
  "alert.set": AlertSetRow[];
  "alert.list": AlertListRow[];
  "alert.clear": AlertClearRow[];
}

export interface Pushes {
  "order.push": OrderPushRow[];
  "trade.push": TradePushRow[];
  "quote.push": QuotePushRow[];
  "alert.push": AlertPushRow[];
  "terminal.notice": null;
  "unknown.topic": null;
}
