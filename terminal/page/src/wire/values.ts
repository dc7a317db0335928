import { Login } from "./types";

// Short names of what the page works with, and the numbers on the wire that it acts on.

export type {
  AccountListRow as Account,
  AlertListRow as Alert,
  Bodies,
  CapitalListRow as Capital,
  CreditinfoListRow as CreditInfo,
  EquityListRow as EquityPoint,
  Login,
  MarginrateListRow as MarginRates,
  MonitorListRow as MonitorRow,
  MonitorManualListRow as ManualPosition,
  MonitorSyncOrderListRow as SyncOrder,
  OrderListRow as Order,
  OrderRates as Rates,
  PositionCodetypeListRow as ClassRow,
  PositionListRow as Position,
  QuoteCurveRow as QuoteCurve,
  QuoteListRow as Quote,
  QuotePushRow as Price,
  Replies,
  TraderListRow as Fill,
} from "./types";

export type Right = Login["rights"][number];
export type NewOrder = import("./types").OrderNewBody["orderList"][number];
export type CancelOrder = import("./types").OrderCancelBodyRow;
export type CreditFigures = import("./types").CreditinfoListRow["creditInfo"][number];

// What rows of an account and of an instrument have in common.
export interface OfAccount {
  index: number;
  userCode: string;
}
export interface OfCode extends OfAccount {
  hashCode: number;
  codeExch: string;
  codeName?: string;
}

export enum Market {
  Futures = 1,
  Stocks = 2,
  Options = 8,
  Credit = 16,
}

export enum CodeClass {
  Stock = 0,
  Future = 1,
  Option = 2,
  Fund = 3,
}

export enum Side {
  Buy = 1,
  Sell = 2,
  MarginBuy = 3,
  ShortSell = 4,
  BuyToReturn = 5,
  SellToRepay = 6,
}

export enum Offset {
  None = 0,
  Open = 1,
  Close = 4,
  CloseToday = 5,
  CloseYesterday = 6,
}

export enum PriceType {
  Limit = 1,
  Market = 2,
}

export enum Status {
  Working = 1,
  Filled = 2,
  Cancelled = 3,
  Refused = 4,
}
