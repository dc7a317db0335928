import { decimalsOf } from "../format";
import { Account, CodeClass, Market, NewOrder, Offset, Order, Position, PriceType, Quote, Side } from "../wire/values";
import { isCount, isOnGrid, readNumber } from "./numbers";

// What an order ticket holds before it is sent, and what may be entered.

export interface Ticket {
  index: number;
  hashCode: number; // 0: none yet
  side: number;
  combOffset: number;
  priceType: number;
  price: string; // as typed
  volume: string; // as typed
  amends: string; // localOrderId of the working order that it replaces; empty if none
  reverses: boolean; // closes what is held and then opens as much on the other side
}

export interface Holding {
  long: number;
  longFree: number; // of it, what can be closed
  longToday: number;
  short: number;
  shortFree: number;
  shortToday: number;
}

export const kNothing: Holding = { long: 0, longFree: 0, longToday: 0, short: 0, shortFree: 0, shortToday: 0 };

export function holdingOf(position: Position | undefined): Holding {
  if (position === undefined) return kNothing;
  return {
    long: position.longPosition,
    longFree: position.longAvailableQuantity,
    longToday: position.longTodayVolume,
    short: position.shortPosition,
    shortFree: position.shortAvailableQuantity,
    shortToday: position.shortTodayVolume,
  };
}

// One way to trade: the side and what it does to the position.
export interface Action {
  side: Side;
  offset: Offset;
  closes: "long" | "short" | "";
}

export const kNoTicket: Ticket = {
  index: 0,
  hashCode: 0,
  side: Side.Buy,
  combOffset: Offset.Open,
  priceType: PriceType.Limit,
  price: "",
  volume: "",
  amends: "",
  reverses: false,
};

export const isSecurity = (codeClass: number): boolean =>
  codeClass === CodeClass.Stock || codeClass === CodeClass.Fund;
export const isBuying = (side: number): boolean =>
  side === Side.Buy || side === Side.MarginBuy || side === Side.BuyToReturn;
export const mayOrder = (account: Account): boolean => account.accountStatus !== 0 && account.ordinaryOrderPrivilege;

export function classesOf(account: Account): number[] {
  if (account.marketType === Market.Futures) return [CodeClass.Future];
  return account.marketType === Market.Options ? [CodeClass.Option] : [CodeClass.Stock, CodeClass.Fund];
}

const kOpenings: Action[] = [
  { side: Side.Buy, offset: Offset.Open, closes: "" },
  { side: Side.Sell, offset: Offset.Open, closes: "" },
];
const kClosings: Action[] = [
  { side: Side.Sell, offset: Offset.Close, closes: "long" },
  { side: Side.Buy, offset: Offset.Close, closes: "short" },
];
const kStocks: Action[] = [
  { side: Side.Buy, offset: Offset.None, closes: "" },
  { side: Side.Sell, offset: Offset.None, closes: "long" },
];
const kCredit: Action[] = [
  ...kStocks,
  { side: Side.MarginBuy, offset: Offset.None, closes: "" },
  { side: Side.SellToRepay, offset: Offset.None, closes: "long" },
  { side: Side.ShortSell, offset: Offset.None, closes: "" },
  { side: Side.BuyToReturn, offset: Offset.None, closes: "short" },
];

// Futures and options offer to close only what is held. The side of a stock order says it all.
export function actionsOf(account: Account | undefined, held: Holding): Action[] {
  if (account?.marketType === Market.Stocks) return kStocks;
  if (account?.marketType === Market.Credit) return kCredit;
  return [...kOpenings, ...kClosings.filter(({ closes }) => (closes === "long" ? held.long > 0 : held.short > 0))];
}

export const isClosing = (combOffset: number): boolean => combOffset >= Offset.Close;

// What the ticket does, among all that could be offered.
export function actionOf(ticket: Ticket, account: Account | undefined): Action {
  const all = account?.marketType === Market.Credit || account?.marketType === Market.Stocks ? kCredit : [];
  const found = [...all, ...kOpenings, ...kClosings].find(
    ({ side, offset }) => side === ticket.side && isClosing(offset) === isClosing(ticket.combOffset),
  );
  return found ?? kOpenings[0];
}

// With what is held, closing comes first: selling a long position must not open a short one by default.
export function preferredAction(actions: Action[], held: Holding): Action {
  const sizeOf = (action: Action) => (action.closes === "" ? 0 : held[action.closes]);
  const closings = actions.filter((action) => isClosing(action.offset) && sizeOf(action) > 0);
  return closings.sort((a, b) => sizeOf(b) - sizeOf(a))[0] ?? actions[0];
}

// What an order of this action can close, of the part that its offset names.
export function closableOf(action: Action, combOffset: number, held: Holding): number {
  if (action.closes === "") return 0;
  const [all, free, today] =
    action.closes === "long" ? [held.long, held.longFree, held.longToday] : [held.short, held.shortFree, held.shortToday];
  if (combOffset === Offset.CloseToday) return Math.min(free, today);
  return combOffset === Offset.CloseYesterday ? Math.min(free, all - today) : free;
}

export function matches(quote: Quote, typed: string): boolean {
  const wanted = typed.trim().toLowerCase();
  return quote.codeExch.toLowerCase().includes(wanted) || quote.codeName.toLowerCase().includes(wanted);
}

// The instruments that the account trades and whose code or name holds what was typed.
export function findInstruments(quotes: Quote[], account: Account, typed: string): Quote[] {
  const classes = classesOf(account);
  return quotes.filter((quote) => classes.includes(quote.codeClass) && matches(quote, typed));
}

// The price at which an order is filled at once.
export function oppositeQuote(side: number, quote: Quote): number {
  return isBuying(side) ? quote.askPrice : quote.bidPrice;
}

export function priceOf(ticket: Ticket, quote: Quote): number {
  return ticket.priceType === PriceType.Market ? oppositeQuote(ticket.side, quote) : readNumber(ticket.price);
}

export type Fault = "instrument" | "price" | "volume" | "lot" | "closable";

// What is wrong with what was typed, field by field. `closable`: of a closing order, what it can close; 0 of others.
export function faultsOf(ticket: Ticket, quote: Quote | undefined, action: Action, closable: number): Set<Fault> {
  const faults = new Set<Fault>();
  if (quote === undefined) return faults.add("instrument");
  const price = readNumber(ticket.price);
  const isGood = price >= quote.lowerLimit && price <= quote.upperLimit && isOnGrid(price, quote.priceTick);
  if (ticket.priceType === PriceType.Limit && !isGood) faults.add("price");
  const volume = readNumber(ticket.volume);
  if (!isCount(ticket.volume, 1, quote.maxVolume)) faults.add("volume");
  else if (action.closes !== "" && volume > closable) faults.add("closable");
  else if (volume % quote.volumeStep !== 0 && volume !== closable) faults.add("lot"); // an odd lot is sold whole
  return faults;
}

export function orderOf(ticket: Ticket, quote: Quote, now: number): Omit<NewOrder, "source"> {
  const isLimit = ticket.priceType === PriceType.Limit;
  return {
    index: ticket.index,
    hashCode: ticket.hashCode,
    side: ticket.side,
    combOffset: ticket.combOffset,
    priceType: ticket.priceType,
    price: isLimit ? Number(readNumber(ticket.price).toFixed(decimalsOf(quote.priceTick))) : 0,
    offset: 0,
    volume: readNumber(ticket.volume),
    insertTimestamp: Math.floor(now / 1000),
  };
}

// The second order of a reversal: it opens, on the side of the first, as much as that closes.
export function openingOf(ticket: Ticket): Ticket {
  return { ...ticket, combOffset: Offset.Open, reverses: false };
}

// What still works of an order.
export const restOf = (order: Order): number => order.volume - order.fillVolume;

// A ticket that changes the price or the volume of a working order.
export function amendmentOf(order: Order, decimals: number): Ticket {
  return {
    ...kNoTicket,
    index: order.index,
    hashCode: order.hashCode,
    side: order.side,
    combOffset: order.combOffset,
    price: order.price.toFixed(decimals),
    volume: String(restOf(order)),
    amends: order.localOrderId,
  };
}
