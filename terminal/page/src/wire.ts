// What the gateway's frames and the topics' lists carry, named as on the wire.

export type Right = "see" | "cancel" | "trade";

export interface Frame {
  id?: string | number | null;
  topic: string;
  message: string;
  data: unknown;
  text?: string; // a reply that is no JSON
  seq?: number; // of pushes
}

// The answer to a login. A gateway that says nothing of rights lets everything through.
export interface Login {
  name?: string;
  rights?: Right[];
  epoch?: string;
  seq?: number;
  resumed?: boolean;
}

export interface Account {
  userCode: string;
  index: number;
  marketType: number;
  ordinaryOrderPrivilege: boolean;
  accountStatus: number;
}

// Figures by name: the views say which of them they show, and how.
export interface Figures {
  [name: string]: unknown;
}

export interface OfAccount extends Figures {
  index: number;
  userCode: string;
}

export interface OfCode extends OfAccount {
  hashCode: number;
  codeExch: string;
}

export interface Position extends OfCode {
  codeName: string;
  currentPrice: number;
  longPosition: number;
  longAvailableQuantity: number;
  longAvgPrice: number;
  shortPosition: number;
  shortAvailableQuantity: number;
  shortAvgPrice: number;
  floatPorfit: number;
  todayPorfit: number;
}

export interface Order extends OfCode {
  codeName: string;
  side: number;
  combOffset: number;
  price: number;
  volume: number;
  priceType: number;
  srcTimestamp: number;
  localOrderId: string;
  status: number;
  note: string;
  source: string;
}

export interface Fill extends OfCode {
  codeName: string;
  side: number;
  combOffset: number;
  price: number;
  volume: number;
  exchTimestamp: number;
  fillId: string;
}

export interface MonitorRow extends OfCode {
  systemLongPos: number;
  systemShortPos: number;
  accountLongPos: number;
  accountShortPos: number;
  longPosDif: number;
  shortPosDif: number;
  isMatchPosDif: boolean;
  syncRuleDetail: string;
}

export interface SyncOrder extends OfCode {
  volume: number;
  price: number;
  side: number;
  combOffsetFlag: number;
}

export interface ManualPosition extends OfCode {
  longPos: number;
  shortPos: number;
}

export interface CreditInfo {
  index: number;
  creditInfo: Figures[];
}

export interface MarginRates {
  index: number;
  rate: { hashCode: number; marginRate: number }[];
}

export interface Quote {
  hashCode: number;
  codeExch: string;
  codeName: string;
  codeClass: number;
  lastPrice: number;
  bidPrice: number;
  askPrice: number;
  preClosePrice: number;
  preSettlementPrice: number;
  lowerLimit: number;
  upperLimit: number;
  priceTick: number;
  volumeStep: number;
  maxVolume: number;
  multiplier: number;
}

// One element of "orderList" of "order.new".
export interface NewOrder {
  index: number;
  hashCode: number;
  side: number;
  combOffset: number;
  priceType: number;
  price: number;
  offset: number;
  volume: number;
  insertTimestamp: number;
  source: string;
}

export const kLimit = 1;
export const kMarket = 2;
export const kWorking = 1;
export const kFutures = 1;
export const kOptions = 8;
export const kCredit = 16;
