import { Capital, CreditFigures, Market, Quote, Rates, Side } from "../wire/values";
import { Action, isBuying } from "./ticket";

// What an order costs and how much of it the account can afford, by the terminal's own rules.

export interface Purse {
  market: number; // the account's market type
  available: number;
  equity: number;
  credit: CreditFigures | undefined; // of a credit account
}

export interface Cost {
  margin: number; // what the order binds: margin, or the whole value of a purchase
  commission: number;
  funds: number; // what it takes of the available funds
  collateral: number; // what it takes of a credit account's margin
  value: number;
}

export function purseOf(market: number, capital: Capital | undefined, credit: CreditFigures | undefined): Purse {
  return { market, available: capital?.available ?? 0, equity: capital?.dynamicAmount ?? 0, credit };
}

export function commissionOf(rates: Rates, side: number, volume: number, value: number): number {
  const fee = value * rates.commissionByMoney + volume * rates.commissionByVolume;
  return Math.max(fee, rates.commissionMinimum) + (isBuying(side) ? 0 : value * rates.saleTax);
}

export function costOf(
  action: Action,
  price: number,
  volume: number,
  quote: Quote,
  rates: Rates,
  purse: Purse,
): Cost {
  const opens = action.closes === "";
  // An opening sale below the market is filled at the bid.
  const paid = opens && !isBuying(action.side) ? Math.max(price, quote.bidPrice) : price;
  const value = paid * volume * quote.multiplier;
  const commission = commissionOf(rates, action.side, volume, value);
  const { credit } = purse;
  if (action.side === Side.MarginBuy || action.side === Side.ShortSell) {
    const isLong = action.side === Side.MarginBuy;
    const collateral = value * ((isLong ? credit?.longMarginRate : credit?.shortMarginRate) ?? 1);
    return { margin: collateral, commission, funds: commission, collateral, value };
  }
  if (action.side === Side.BuyToReturn) {
    return { margin: value, commission, funds: value + commission, collateral: 0, value };
  }
  if (!opens) return { margin: 0, commission, funds: 0, collateral: 0, value };
  const isLong = isBuying(action.side);
  const margin =
    purse.market === Market.Credit
      ? value
      : value * (isLong ? rates.longByMoney : rates.shortByMoney) +
        volume * (isLong ? rates.longByVolume : rates.shortByVolume);
  return { margin, commission, funds: margin + commission, collateral: 0, value };
}

export function isAffordable(action: Action, cost: Cost, purse: Purse): boolean {
  const { credit } = purse;
  if (action.side === Side.BuyToReturn) return true; // what the short sale brought pays for it too
  if (cost.funds > purse.available) return false;
  if (cost.collateral === 0 || credit === undefined) return true;
  const limit = action.side === Side.MarginBuy ? credit.longLimitAvl : credit.shortLimitAvl;
  return cost.collateral <= credit.marginAvl && cost.value <= limit;
}

// The largest volume that funds (or, of a closing order, the holding) and the instrument's limit allow.
export function largestVolume(
  action: Action,
  price: number,
  closable: number,
  quote: Quote,
  rates: Rates | undefined,
  purse: Purse,
): number {
  const step = quote.volumeStep;
  if (action.closes !== "") return Math.min(closable, quote.maxVolume);
  if (rates === undefined || !(price > 0)) return 0;
  let low = 0;
  let high = Math.floor(quote.maxVolume / step);
  while (low < high) {
    const middle = Math.ceil((low + high) / 2);
    const cost = costOf(action, price, middle * step, quote, rates, purse);
    if (isAffordable(action, cost, purse)) low = middle;
    else high = middle - 1;
  }
  return low * step;
}

// A share of the largest volume, in whole lots; all of it may be an odd lot.
export function shareOf(largest: number, share: number, step: number): number {
  return share === 1 ? largest : Math.floor((largest * share) / step) * step;
}

// The funds and margin that a working order gives back when an amendment cancels it.
export function withReturned(purse: Purse, cost: Cost | undefined): Purse {
  if (cost === undefined) return purse;
  const credit = purse.credit && { ...purse.credit, marginAvl: purse.credit.marginAvl + cost.collateral };
  return { ...purse, available: purse.available + cost.funds, credit };
}
