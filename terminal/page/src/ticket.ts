import { decimalsOf } from "./format";
import { Account, kCredit, kFutures, kLimit, kMarket, kOptions, NewOrder, Quote } from "./wire";

// What an order ticket holds before it is sent, and what may be entered.

export interface Ticket {
  index: number;
  hashCode: number;
  side: number;
  combOffset: number;
  priceType: number;
  price: string;
  volume: string;
}

const kStock = 0;
const kFuture = 1;
const kOption = 2;
const kFund = 3;

export function classesOf(account: Account): number[] {
  if (account.marketType === kFutures) return [kFuture];
  return account.marketType === kOptions ? [kOption] : [kStock, kFund];
}

export function sidesOf(account: Account | undefined): number[] {
  return account?.marketType === kCredit ? [1, 2, 3, 4, 5, 6] : [1, 2];
}

// Stocks and funds have none: the side says it all.
export function offsetsOf(account: Account | undefined): number[] {
  const hasOffsets = account?.marketType === kFutures || account?.marketType === kOptions;
  return hasOffsets ? [1, 4, 5, 6, 3] : [];
}

export const isSecurity = (quote: Quote): boolean => quote.codeClass === kStock || quote.codeClass === kFund;
export const isBuying = (side: number): boolean => side === 1 || side === 3 || side === 5;

// The instruments that the account trades and whose code or name holds what was typed.
export function findInstruments(quotes: Quote[], account: Account, typed: string): Quote[] {
  const classes = classesOf(account);
  const wanted = typed.trim().toLowerCase();
  return quotes.filter(
    (quote) =>
      classes.includes(quote.codeClass) &&
      (quote.codeExch.toLowerCase().includes(wanted) || quote.codeName.toLowerCase().includes(wanted)),
  );
}

// `text` moved by `steps` of `step`, onto the grid, kept from `low` to `high`. What is no number counts as `low`.
export function moved(text: string, steps: number, step: number, low: number, high: number): string {
  const value = Number(text);
  const from = text.trim() === "" || !Number.isFinite(value) ? low : value;
  const to = Math.round(from / step + steps) * step;
  return Math.min(high, Math.max(low, to)).toFixed(decimalsOf(step));
}

export function isGoodPrice(text: string, quote: Quote): boolean {
  const price = Number(text);
  const ticks = price / quote.priceTick;
  const onGrid = Math.abs(ticks - Math.round(ticks)) < 1e-6;
  return text.trim() !== "" && onGrid && price >= quote.lowerLimit && price <= quote.upperLimit;
}

export function isCount(text: string, least: number, most: number): boolean {
  return /^\d+$/.test(text) && Number(text) >= least && Number(text) <= most;
}

// Securities are bought in whole lots. What is left of one may be sold or returned: the terminal knows whether it is all.
export function isOddLot(ticket: Ticket, quote: Quote): boolean {
  const buys = ticket.side === 1 || ticket.side === 3;
  return buys && isSecurity(quote) && Number(ticket.volume) % quote.volumeStep !== 0;
}

// The opposite quote: what a market order is taken at.
export function oppositeQuote(side: number, quote: Quote): number {
  return isBuying(side) ? quote.askPrice : quote.bidPrice;
}

export function priceOf(ticket: Ticket, quote: Quote): number {
  return ticket.priceType === kMarket ? oppositeQuote(ticket.side, quote) : Number(ticket.price);
}

export function orderOf(ticket: Ticket, quote: Quote, now: number): Omit<NewOrder, "source"> {
  return {
    index: ticket.index,
    hashCode: ticket.hashCode,
    side: ticket.side,
    combOffset: ticket.combOffset,
    priceType: ticket.priceType,
    price: ticket.priceType === kLimit ? Number(Number(ticket.price).toFixed(decimalsOf(quote.priceTick))) : 0,
    offset: 0,
    volume: Number(ticket.volume),
    insertTimestamp: Math.floor(now / 1000),
  };
}
