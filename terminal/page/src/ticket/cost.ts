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
  returned: number; // what the available funds gain once it is filled
  value: number;
}

export function purseOf(market: number, capital: Capital | undefined, credit: CreditFigures | undefined): Purse {
  return { market, available: capital?.available ?? 0, equity: capital?.dynamicAmount ?? 0, credit };
}

export function commissionOf(rates: Rates, side: number, volume: number, value: number): number {
  const fee = value * rates.commissionByMoney + volume * rates.commissionByVolume;
  return Math.max(fee, rates.commissionMinimum) + (isBuying(side) ? 0 : value * rates.saleTax);
}

function marginOf(isLong: boolean, volume: number, value: number, rates: Rates): number {
  const { longByMoney, longByVolume, shortByMoney, shortByVolume } = rates;
  return isLong ? value * longByMoney + volume * longByVolume : value * shortByMoney + volume * shortByVolume;
}

// What a closing order frees: the margin at the last price, and the gain from that price. The proceeds of a sale to
// repay go to the debt.
function returnedBy(action: Action, price: number, volume: number, quote: Quote, rates: Rates, purse: Purse): number {
  if (purse.market === Market.Credit && action.side !== Side.Sell) return 0;
  const isLong = action.closes === "long";
  const held = quote.lastPrice * volume * quote.multiplier;
  const gain = (price - quote.lastPrice) * volume * quote.multiplier * (isLong ? 1 : -1);
  return (purse.market === Market.Credit ? held : marginOf(isLong, volume, held, rates)) + gain;
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
  const isLong = isBuying(action.side);
  // An opening sale below the market is filled at the bid.
  const paid = opens && !isLong ? Math.max(price, quote.bidPrice) : price;
  const value = paid * volume * quote.multiplier;
  const commission = commissionOf(rates, action.side, volume, value);
  const { credit } = purse;
  const none = { margin: 0, commission, funds: 0, collateral: 0, returned: 0, value };
  if (action.side === Side.MarginBuy || action.side === Side.ShortSell) {
    const collateral = value * ((isLong ? credit?.longMarginRate : credit?.shortMarginRate) ?? 1);
    return { ...none, margin: collateral, funds: commission, collateral };
  }
  if (action.side === Side.BuyToReturn) return { ...none, margin: value, funds: value + commission };
  if (!opens) {
    const returned = returnedBy(action, price, volume, quote, rates, purse) - commission;
    return { ...none, returned };
  }
  const margin = purse.market === Market.Credit ? value : marginOf(isLong, volume, value, rates);
  return { ...none, margin, funds: margin + commission };
}

// The available funds once the order is filled.
export function availableAfter(purse: Purse, cost: Cost): number {
  return purse.available - cost.funds + cost.returned;
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
